// The text engine through its C interface. The first bytes of an input choose source, target,
// options and where the text is cut; the rest is the text. What any cutting gives is compared, and
// the account held against the text.

#include "seeds.h"
#include "support/engine.h"

using namespace sgbk_test;

std::vector<Seed> seeds() {
  std::vector<Seed> all;
  std::mt19937 random(1);
  const auto sources = sourceNames(), targets = targetNames();
  const auto add = [&](std::size_t from, std::size_t to, std::size_t options, std::string text) {
    for (const std::size_t byte : {30uL, 7uL, 2uL, 1uL, options >> 8, options, to, from}) {
      text.insert(text.begin(), static_cast<char>(byte));
    }
    all.push_back({std::to_string(all.size()) + " " + sources[from] + " " + targets[to], text});
  };
  for (std::size_t from = 0; from < sources.size(); ++from) {
    for (std::size_t to = 0; to < targets.size(); ++to) {
      add(from, to, random() & random(), randomText(sources[from], 60, random));
      // What trimming holds longest: blanks, each with a long run of punctuation that goes.
      std::string held = "A\xA1\xA1";
      for (int i = 0; i < 20; ++i) held += ".........\xA1\xEE\xA1\xA1";
      if (sources[from] == "gbk") add(from, to, 4, held + "B");
    }
  }
  return all;
}

std::string faultOf(const std::string& input) {
  constexpr std::size_t kHead = 8;
  if (input.size() < kHead) return "";
  static const auto sources = sourceNames(), targets = targetNames();
  const auto at = [&](std::size_t i) { return std::size_t{static_cast<unsigned char>(input[i])}; };
  const std::string setup = setupOf(sources[at(0) % sources.size()],
                                    targets[at(1) % targets.size()], at(2) + 256 * at(3));
  return disagreement(setup, input.substr(kHead), {at(4), at(5), at(6), at(7) + 1});
}
