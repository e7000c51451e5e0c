// One fuzz target over every operation. The first byte of an input chooses the operation, the next
// two the capacity; the rest is the text. Each input is run beside the operation's twin, between
// protected pages and over two fillings of the destination.

#include <cstdlib>

#include "seeds.h"
#include "support/operations.h"

using namespace sgbk_test;

std::vector<Seed> seeds() {
  EncodingConvertor::initializeInstance(nullptr);
  std::vector<Seed> all;
  for (const Operation& operation : operations()) {
    std::mt19937 random(1);
    std::string input = {static_cast<char>(all.size()), '\x50', '\0'};
    for (int i = 0; i < 9; ++i) input += operation.randomCharacter(random);
    all.push_back({operation.name, input + operation.alphabet()});
  }
  return all;
}

std::string faultOf(const std::string& input) {
  constexpr std::size_t kHead = 3;
  if (input.size() < kHead) return "";
  // Chosen by this in place of the first byte.
  static const char* const wanted = std::getenv("SGBK_FUZZ_OPERATION");
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(input[i]); };
  const Operation* const operation =
      wanted != nullptr ? &operationNamed(wanted) : &operations()[at(0) % operations().size()];
  const std::string text = input.substr(kHead);
  const int capacity = (at(1) + 256 * at(2)) % (operation->enough(text.size()) + 2) - 1;
  return disagreement(*operation, text, capacity);
}
