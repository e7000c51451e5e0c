// What must hold for every input, however it comes and whatever is asked.

#include <gtest/gtest.h>

#include <algorithm>

#include "support/engine.h"
#include "support/hex.h"

namespace sgbk_test {
namespace {

TEST(EveryInput, GivesTheSameInPiecesAndInLines) {
  std::mt19937 random(1);
  for (int i = 0; i < 150 && !HasFailure(); ++i) {
    for (const std::string& from : sourceNames()) {
      for (const std::string& to : targetNames()) {
        // Every other text is of whole characters, nearly.
        const std::string text = randomText(wordsOf(from), random() % 8 == 0 ? 400 : 12, random);
        Pieces pieces = {1};
        for (auto k = random() % 5; k-- > 0;) pieces.push_back(random() % 12);
        std::shuffle(pieces.begin(), pieces.end(), random);
        EXPECT_EQ(disagreement(setupOf(from, to, random() & random()), text, pieces), "");
      }
    }
  }
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
    const char* const kSources[] = {"auto", "auto", "hz", "ucs-2le"};
    for (int k = 0; k < 3; ++k) text += randomText(wordsOf(kSources[random() % 4]), 6, random);
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
