// Runs the fuzz target over the seeds in the given folders and over variants of them, always the
// same ones, in builds without libFuzzer.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void runTarget(const std::string& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int argc, char** argv) {
  LLVMFuzzerInitialize(&argc, &argv);
  std::vector<std::string> seeds;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::ifstream file(entry.path(), std::ios::binary);
      seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
  }
  if (seeds.empty()) return 1;
  std::sort(seeds.begin(), seeds.end());
  std::mt19937 random(1);
  const auto below = [&](std::size_t n) { return random() % n; };
  for (const std::string& seed : seeds) {
    runTarget(seed);
    for (int i = 0; i < 200; ++i) {
      std::string variant = seed;
      const std::string& other = seeds[below(seeds.size())];
      variant.insert(below(variant.size() + 1), other.substr(below(other.size() + 1), below(9)));
      variant[below(variant.size())] = static_cast<char>(below(256));
      variant[1] = static_cast<char>(below(256));  // another capacity
      variant[2] = 0;
      runTarget(variant);
    }
  }
  std::printf("%zu seeds\n", seeds.size());
  return 0;
}
