// One fuzz target over every operation. The first byte of an input chooses the operation, the next
// two the capacity; the rest is the text. Each input is run beside the operation's twin, between
// protected pages and over two fillings of the destination.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/operations.h"

namespace {

// Chosen on the command line in place of the first byte.
const sgbk_test::Operation* chosen = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  EncodingConvertor::initializeInstance(nullptr);
  constexpr char kOption[] = "--operation=";
  for (int i = 1; i < *argc; ++i) {
    const std::string argument = (*argv)[i];
    if (argument.starts_with(kOption)) {
      chosen = &sgbk_test::operationNamed(argument.substr(std::strlen(kOption)));
    }
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kHead = 3;
  if (size < kHead) return 0;
  const auto list = sgbk_test::operations();
  const auto& operation = chosen != nullptr ? *chosen : list[data[0] % list.size()];
  const std::string text(reinterpret_cast<const char*>(data) + kHead, size - kHead);
  const long capacity = (data[1] + 256 * data[2]) % (operation.enough(text.size()) + 2) - 1;
  const std::string difference = disagreement(operation, text, capacity);
  if (!difference.empty()) {
    std::fprintf(stderr, "%s\n", difference.c_str());
    std::abort();
  }
  return 0;
}
