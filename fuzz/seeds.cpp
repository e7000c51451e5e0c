// Writes the seeds of a fuzz target into the folder SGBK_FUZZ_SEEDS for libFuzzer, or runs them.

#include "seeds.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  const char* const folder = std::getenv("SGBK_FUZZ_SEEDS");
  for (const Seed& seed : seeds()) {
    if (folder == nullptr) break;
    std::FILE* const file = std::fopen((std::string(folder) + "/" + seed.name).c_str(), "wb");
    if (file == nullptr) std::abort();
    std::fwrite(seed.input.data(), 1, seed.input.size(), file);
    std::fclose(file);
  }
  return 0;
}

#ifdef SGBK_PLAIN_MAIN
// Takes the inputs in the files named, or the seeds.
int main(int argc, char** argv) {
  std::vector<Seed> inputs = seeds();
  if (argc > 1) inputs.clear();
  for (int i = 1; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    inputs.push_back({argv[i], {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()}});
    if (inputs.back().input.empty()) return 1;
  }
  for (const Seed& seed : inputs) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(seed.input.data()), seed.input.size());
  }
}
#endif
