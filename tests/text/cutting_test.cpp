// What must hold for every input, however it comes and whatever is asked.

#include <gtest/gtest.h>

#include <algorithm>

#include "support/engine.h"
#include "support/hex.h"

namespace sgbk_test {
namespace {

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
    Pieces pieces = {1};
    for (auto i = random() % 5; i-- > 0;) pieces.push_back(random() % 12);
    std::shuffle(pieces.begin(), pieces.end(), random);
    EXPECT_EQ(disagreement(setup, text, pieces), "");
  });
}

// Without what says something of the input as a whole.
std::string withoutHead(std::string setup) {
  for (const char* const option : {" html", " declare", " strict"}) {
    if (const std::size_t at = setup.find(option); at != setup.npos)
      setup.erase(at, std::string(option).size());
  }
  return setup;
}

TEST(EveryInput, HasTheLinesOfTheOutput) {
  forTexts(60, [](const auto& from, const auto& all, const auto& text, auto&) {
    const std::string setup = withoutHead(all);
    const Converted whole = convert(setup, text);
    if (setup.find(" gbk-wide") != setup.npos || whole.result != SGBK_OK) return;
    const bool isWide = setup.find(" utf-16le") != setup.npos;
    const std::string readable = isWide ? textOf("ucs-2le utf-8", whole.text) : whole.text;
    const auto lineFeeds = std::count(readable.begin(), readable.end(), '\n');
    EXPECT_EQ(lineFeeds, whole.counts.lines) << setup << ' ' << toHex(text);

    std::string joined;
    for (std::size_t at = 0, end; at < text.size(); at = end) {
      end = endOfLine(whole.source, text, at);
      joined += textOf(whole.source + setup.substr(from.size()), text.substr(at, end - at));
    }
    EXPECT_EQ(toHex(joined), toHex(whole.text)) << setup << ' ' << toHex(text);
  });
}

TEST(EveryInput, EndsBeforeTheLineOfTheFirstLossUnderStrict) {
  forTexts(60, [](const auto& from, const auto& all, const auto& text, auto&) {
    const Converted loose = convert(withoutHead(all), text);
    const Converted strict = convert(withoutHead(all) + " strict", text);
    const bool isLost = loose.counts.first.size != 0;
    if (loose.result != SGBK_OK) return;
    ASSERT_EQ(strict.result, isLost ? SGBK_LOST : SGBK_OK) << toHex(text);
    std::size_t begin = 0;
    for (std::uint64_t line = 1; line < loose.counts.first.line; ++line)
      begin = endOfLine(loose.source, text, begin);
    const std::string before = isLost ? text.substr(0, begin) : text;
    EXPECT_EQ(strict.text, textOf(loose.source + withoutHead(all).substr(from.size()), before))
        << all << toHex(text);
    EXPECT_EQ(described({strict.counts.first}), described({loose.counts.first}));
  });
}

TEST(Strict, KeepsWholeLinesAlsoBehindOneTooLongToHold) {
  const std::string lines = std::string(300000, 'a') + "\xA4\xA4\n" + "b\xA4\xA4\nc\n";
  for (const Pieces& pieces :
       {Pieces{}, {1 << 18}, {100000}, {(1 << 18) + 1, 0}, {300001, 7}, {300003}}) {
    const Converted converted = convert("big5 gbk strict", lines + "x\xFF\n", pieces);
    EXPECT_TRUE(converted.text == textOf("big5 gbk", lines)) << pieces.size();
    EXPECT_EQ(converted.error, "line 4, byte 300010: FF is malformed");
  }
}

}  // namespace
}  // namespace sgbk_test
