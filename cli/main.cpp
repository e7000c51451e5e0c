// sgbk: Chinese text as it is found, to clean simplified GBK.

#include <dlfcn.h>
#include <sha256.h>
#include <sys/types.h>

#include <cstdint>
#include <cstdio>

#include "files.h"
#include "message.h"
#include "options.h"

namespace {

void print(const std::string& text) {
  cli::Output output("-");
  output.write(text);
  output.putInPlace();
}

// The SHA-256 of a loaded table. It is looked up by name: a reference to the data would copy it
// into the program.
std::string hashOf(const std::string& table) {
  constexpr std::size_t kTableBytes = 131072;
  const std::string symbol = "_binary_data_" + table + "_ctb_start";
  const void* const image = dlsym(RTLD_DEFAULT, symbol.c_str());
  if (image == nullptr) return "not loaded";
  char hash[SHA256_DIGEST_STRING_LENGTH];
  return SHA256Data(static_cast<const std::uint8_t*>(image), kTableBytes, hash);
}

// The tables in the form that sha256sum checks.
std::string versionText() {
  std::string text = "sgbk " SGBK_VERSION "\n";
  for (const char* table : {"big52sgbk", "gbkt2s", "uc2sgbk", "gbk2big5"}) {
    text += hashOf(table) + "  " + table + ".ctb\n";
  }
  return text;
}

void run(int argc, char** argv) {
  const cli::Options options = cli::parseOptions(argc, argv);
  if (options.has("help")) return print(cli::helpText());
  if (options.has("list")) return print(cli::encodingList());
  if (options.has("version")) return print(versionText());
  if (options.has("explain")) return print(cli::explanation(options.value("explain")));
  cli::convertFiles(options);
}

}  // namespace

int main(int argc, char** argv) {
  cli::guardStreamsAndFiles();
  try {
    run(argc, argv);
  } catch (const cli::UsageError& error) {
    cli::tell(cli::Status::usage, error.what());
    std::fputs("Try 'sgbk --help', or 'sgbk --list' for the encodings.\n", stderr);
  } catch (const std::bad_alloc&) {
    cli::tell(cli::Status::failure, "not enough memory");
  } catch (const std::exception& error) {
    cli::tell(cli::Status::failure, error.what());
  }
  return static_cast<int>(cli::endMessages());
}
