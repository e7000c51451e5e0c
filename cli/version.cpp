#include "version.h"

#include <dlfcn.h>
#include <sha256.h>
#include <sys/types.h>

#include <cstdint>

namespace cli {
namespace {

constexpr std::size_t kTableBytes = 131072;

// Looked up by name: a reference to the data would copy it into the program.
std::string hashOf(const std::string& table) {
  const std::string symbol = "_binary_data_" + table + "_ctb_start";
  const void* const image = dlsym(RTLD_DEFAULT, symbol.c_str());
  if (image == nullptr) return "not loaded";
  char hash[SHA256_DIGEST_STRING_LENGTH];
  return SHA256Data(static_cast<const std::uint8_t*>(image), kTableBytes, hash);
}

}  // namespace

std::string versionText() {
  std::string text = "sgbk " SGBK_VERSION "\n";
  for (const char* table : {"big52sgbk", "gbkt2s", "uc2sgbk", "gbk2big5"}) {
    text += hashOf(table) + "  " + table + ".ctb\n";
  }
  return text;
}

}  // namespace cli
