// Runs the inputs of a fuzz target; writes its seeds into the folder SGBK_FUZZ_SEEDS for libFuzzer.

#include "seeds.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  const std::string fault = faultOf({data, size});
  if (fault.empty()) return 0;
  std::fprintf(stderr, "%s\n", fault.c_str());
  std::abort();
}

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
    inputs.push_back({argv[i], {std::istreambuf_iterator<char>(file), {}}});
    if (inputs.back().input.empty()) return 1;
  }
  for (const Seed& seed : inputs) LLVMFuzzerTestOneInput(seed.input.data(), seed.input.size());
}
#endif
