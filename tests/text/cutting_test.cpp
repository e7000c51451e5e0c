// What must hold for every input, however it comes and whatever is asked.

#include <gtest/gtest.h>

#include <algorithm>

#include "support/hex.h"
#include "text/engine.h"

namespace sgbk_test {
namespace {

Pieces randomPieces(std::mt19937& random) {
  Pieces pieces = {1};
  for (std::size_t i = random() % 5; i-- > 0;) pieces.push_back(random() % 12);
  std::shuffle(pieces.begin(), pieces.end(), random);
  return pieces;
}

// check(source, setup, text) for random setups and texts, damaged ones among them.
template <class Check>
void forTexts(int count, Check check) {
  std::mt19937 random(1);
  for (int i = 0; i < count; ++i) {
    for (const std::string& from : sourceNames()) {
      for (const std::string& to : targetNames()) {
        if (testing::Test::HasFailure()) return;
        // Every other text is of whole characters, nearly.
        const std::string setup = setupOf(from, to, random() & random() & 0xFFF);
        check(from, setup, randomText(from, random() % 8 == 0 ? 400 : 12, random), random);
      }
    }
  }
}

TEST(EveryInput, GivesTheSameForAnyCutting) {
  forTexts(150, [](const auto&, const auto& setup, const auto& text, auto& random) {
    const std::string difference = disagreement(setup, text, randomPieces(random));
    EXPECT_TRUE(difference.empty()) << difference;
  });
}

}  // namespace
}  // namespace sgbk_test
