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

TEST(EveryInput, ComesOutLineByLineAndUnderStrictUpToTheFirstLoss) {
  forTexts(60, [](const auto& from, const auto& all, const auto& text, auto&) {
    const std::string setup = withoutHead(all);
    SCOPED_TRACE(setup + ' ' + toHex(text));
    const Converted whole = convert(setup, text), strict = convert(setup + " strict", text);
    if (whole.result != SGBK_OK) return;
    const std::uint64_t lossy = whole.counts.first.line;  // 0 for none
    std::string joined, before;
    std::uint64_t line = 0;
    for (std::size_t at = 0, end; at < text.size(); at = end) {
      end = endOfLine(whole.source, text, at);
      if (++line == lossy) before = joined;
      joined += textOf(whole.source + setup.substr(from.size()), text.substr(at, end - at));
    }
    EXPECT_EQ(toHex(joined), toHex(whole.text));
    EXPECT_EQ(toHex(strict.text), toHex(lossy == 0 ? joined : before));
    EXPECT_EQ(strict.result, lossy == 0 ? SGBK_OK : SGBK_LOST);
    EXPECT_EQ(described({strict.counts.first}), described({whole.counts.first}));

    if (setup.find(" gbk-wide") != setup.npos) return;
    const bool isWide = setup.find(" utf-16le") != setup.npos;
    const std::string readable = isWide ? textOf("ucs-2le utf-8", whole.text) : whole.text;
    EXPECT_EQ(std::count(readable.begin(), readable.end(), '\n'), whole.counts.lines);
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
  const std::string lossy = "c\n" + std::string(300000, 'a') + "\xFF\n";
  EXPECT_EQ(convert("big5 gbk strict", lossy, {}).text, "c\n");
}

TEST(Auto, TakesTheInputForWhatDetectSaysOfAllThatCame) {
  std::mt19937 random(6);
  for (int i = 0; i < 1500; ++i) {
    std::string text;
    const char* const kSources[] = {"auto", "big5", "gbk", "utf-8", "hz", "ucs-2le", "auto"};
    for (int k = 0; k < 3; ++k) text += randomText(kSources[random() % 7], 6, random);
    for (const std::size_t piece : Pieces{1, 2, 7, 10000}) {
      const Handle c = open("auto utf-8");
      for (std::size_t at = 0; at < text.size(); at += piece) {
        const std::string_view part = std::string_view(text).substr(at, piece);
        if (feed(c.get(), part) != SGBK_OK) break;
        const char* const found = sgbk_detect(text.data(), at + part.size(), 0);
        EXPECT_STREQ(sgbk_source(c.get()), found != nullptr ? found : "auto") << toHex(text);
      }
    }
  }
}

TEST(Auto, WritesAsciiAtOnce) {
  const std::string text = "<html>\r\n<body>text ~ \x7F\n" + std::string(300000, 'x') + "~\n";
  const Handle c = open("auto utf-8");
  std::size_t written = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char* out;
    std::size_t size;
    ASSERT_EQ(sgbk_convert(c.get(), &text[at], 1, 0, &out, &size), SGBK_OK);
    written += size;
    // In UTF-16 a NUL may follow at the beginning; a tilde may begin an escape.
    if (at < 16) continue;
    ASSERT_EQ(written, text[at] == '~' ? at : at + 1) << at;
  }
}

}  // namespace
}  // namespace sgbk_test
