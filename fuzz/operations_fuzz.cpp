// One fuzz target over every operation. The first byte of an input chooses the operation, the next
// two the capacity; the rest is the text. Each input is run beside the operation's twin, between
// protected pages and over two fillings of the destination.

#include <cstdio>
#include <cstdlib>

#include "seeds.h"
#include "support/operations.h"

namespace {

using namespace sgbk_test;

// Chosen by SGBK_FUZZ_OPERATION in place of the first byte.
const Operation* chosen() {
  const char* const name = std::getenv("SGBK_FUZZ_OPERATION");
  return name != nullptr ? &operationNamed(name) : nullptr;
}

// An input with all that the operation distinguishes, and some characters.
std::string seed(std::size_t index) {
  const Operation& operation = operations()[index];
  std::mt19937 random(1);
  std::string input = {static_cast<char>(index), '\x50', '\0'};
  for (int i = 0; i < 9; ++i) input += operation.randomCharacter(random);
  return input + operation.alphabet();
}

}  // namespace

std::vector<Seed> seeds() {
  EncodingConvertor::initializeInstance(nullptr);
  std::vector<Seed> all;
  for (std::size_t i = 0; i < operations().size(); ++i) all.push_back({operations()[i].name, seed(i)});
  return all;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  constexpr std::size_t kHead = 3;
  if (size < kHead) return 0;
  static const Operation* const wanted = chosen();
  const auto& operation = wanted != nullptr ? *wanted : operations()[data[0] % operations().size()];
  const std::string text(reinterpret_cast<const char*>(data) + kHead, size - kHead);
  const int capacity = (data[1] + 256 * data[2]) % (operation.enough(text.size()) + 2) - 1;
  const std::string difference = disagreement(operation, text, capacity);
  if (difference.empty()) return 0;
  std::fprintf(stderr, "%s\n", difference.c_str());
  std::abort();
}
