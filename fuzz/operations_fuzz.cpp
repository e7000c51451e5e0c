// One fuzz target over every operation. The first byte of an input chooses the operation, the next
// two the capacity; the rest is the text. Each input is run beside the operation's twin, between
// protected pages and over two fillings of the destination.

#include "support/operations.h"
#include "target.h"

using namespace sgbk_test;

std::string faultOf(const std::string& input) {
  constexpr std::size_t kHead = 3;
  if (input.size() < kHead || EncodingConvertor::initializeInstance(nullptr) != 0) return "";
  // Chosen by this in place of the first byte.
  static const char* const wanted = std::getenv("SGBK_FUZZ_OPERATION");
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(input[i]); };
  const Operation* const operation =
      wanted != nullptr ? &operationNamed(wanted) : &operations()[at(0) % operations().size()];
  const std::string text = input.substr(kHead);
  const int capacity = (at(1) + 256 * at(2)) % (operation->enough(text.size()) + 2) - 1;
  return disagreement(*operation, text, capacity);
}
