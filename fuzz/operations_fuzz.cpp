// One fuzz target over every operation. The first byte of an input chooses the operation, the next
// two the capacity; the rest is the text. Each input is run beside the operation's twin, between
// protected pages and over two fillings of the destination.

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "support/operations.h"

namespace {

using namespace sgbk_test;

// Chosen on the command line in place of the first byte.
const Operation* chosen = nullptr;

// An input with all that the operation distinguishes, and some characters.
std::string seed(std::size_t index) {
  const Operation& operation = operations()[index];
  std::mt19937 random(1);
  std::string input = {static_cast<char>(index), '\x50', '\0'};
  for (int i = 0; i < 9; ++i) input += operation.randomCharacter(random);
  return input + operation.alphabet();
}

}  // namespace

// SGBK_FUZZ_OPERATION names the only operation to try; into the folder SGBK_FUZZ_SEEDS goes an
// input for each.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  EncodingConvertor::initializeInstance(nullptr);
  if (const char* const name = std::getenv("SGBK_FUZZ_OPERATION")) chosen = &operationNamed(name);
  if (const char* const folder = std::getenv("SGBK_FUZZ_SEEDS")) {
    for (std::size_t i = 0; i < operations().size(); ++i) {
      const std::string name = std::string(folder) + "/" + operations()[i].name;
      std::FILE* const file = std::fopen(name.c_str(), "wb");
      if (file == nullptr) std::abort();
      std::fwrite(seed(i).data(), 1, seed(i).size(), file);
      std::fclose(file);
    }
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  constexpr std::size_t kHead = 3;
  if (size < kHead) return 0;
  const auto& operation = chosen != nullptr ? *chosen : operations()[data[0] % operations().size()];
  const std::string text(reinterpret_cast<const char*>(data) + kHead, size - kHead);
  const int capacity = (data[1] + 256 * data[2]) % (operation.enough(text.size()) + 2) - 1;
  const std::string difference = disagreement(operation, text, capacity);
  if (difference.empty()) return 0;
  std::fprintf(stderr, "%s\n", difference.c_str());
  std::abort();
}

#ifdef SGBK_PLAIN_MAIN
// Takes the inputs in the files named, or the seeds.
int main(int argc, char** argv) {
  LLVMFuzzerInitialize(&argc, &argv);
  std::vector<std::string> inputs;
  for (std::size_t i = 0; argc == 1 && i < operations().size(); ++i) inputs.push_back(seed(i));
  for (int i = 1; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (inputs.back().empty()) return 1;
  }
  for (const std::string& input : inputs) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(input.data()), input.size());
  }
}
#endif
