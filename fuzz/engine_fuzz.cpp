// The text engine through its C interface. The first bytes of an input choose source, target,
// options and where the text is cut; the rest is the text. What any cutting gives is compared, and
// the account held against the text.

#include <cstdio>
#include <cstdlib>

#include "seeds.h"
#include "support/engine.h"

namespace {

using namespace sgbk_test;

constexpr std::size_t kHead = 8;

}  // namespace

std::vector<Seed> seeds() {
  std::vector<Seed> all;
  std::mt19937 random(1);
  for (std::size_t from = 0; from < sourceNames().size(); ++from) {
    for (std::size_t to = 0; to < targetNames().size(); ++to) {
      const auto options = random() & random();
      std::string input;
      for (const std::size_t byte : {from, to, options & 0xFF, options >> 8 & 0xFF, 1uL, 2uL, 7uL, 30uL}) {
        input += static_cast<char>(byte);
      }
      input += randomText(sourceNames()[from], 60, random);
      all.push_back({sourceNames()[from] + " " + targetNames()[to], input});
    }
  }
  return all;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (size < kHead) return 0;
  static const auto sources = sourceNames();
  static const auto targets = targetNames();
  const std::string setup = setupOf(sources[data[0] % sources.size()], targets[data[1] % targets.size()],
                                    data[2] + 256uL * data[3]);
  const Pieces pieces = {data[4], data[5], data[6], data[7] + 1uL};
  const std::string text(reinterpret_cast<const char*>(data) + kHead, size - kHead);
  const std::string difference = disagreement(setup, text, pieces);
  if (difference.empty()) return 0;
  std::fprintf(stderr, "%s\n", difference.c_str());
  std::abort();
}
