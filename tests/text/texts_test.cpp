// Whole texts: what docs/ shows of them, the stages against the library's operations on lines, and
// what must hold for every input, however it comes and whatever is asked.

#include <gtest/gtest.h>

#include <algorithm>

#include "support/engine.h"
#include "support/hex.h"

namespace sgbk_test {
namespace {

using namespace std::string_literals;

TEST(Documentation, TextsComeOutSo) {
  const auto rows = rowsBelow("| from, to, options | text | comes out | losses |");
  EXPECT_GT(rows.size(), 30u);
  for (const auto& cells : rows) {
    const Converted result = convert(quoted(cells.at(0)), quoted(cells.at(1)));
    EXPECT_EQ(toHex(result.text), toHex(quoted(cells.at(2)))) << cells[0] << cells[1];
    const std::string losses = quoted(cells.at(3));
    EXPECT_EQ(described(result.losses), losses.empty() ? "" : losses + ' ') << cells[0] << cells[1];
    EXPECT_EQ(result.result, SGBK_OK);
  }
}

TEST(Documentation, EncodingsAreFoundSo) {
  const auto rows = rowsBelow("| bytes | found |");
  EXPECT_GT(rows.size(), 40u);
  for (const auto& cells : rows) {
    const std::string text = quoted(cells.at(0)), source = quoted(cells.at(1));
    const char* const found = sgbk_detect(text.data(), text.size(), 1);
    EXPECT_EQ(found != nullptr ? found : "", source) << cells[0];
    const Converted converted = convert("auto utf-8", text, {1 << 17, 1 << 17, 1});
    EXPECT_EQ(converted.result, source.empty() ? SGBK_UNKNOWN_SOURCE : SGBK_OK) << cells[0];
    EXPECT_EQ(converted.source, source.empty() ? "auto" : source) << cells[0];
  }
}

TEST(Trimming, IsTheLibrarys) {
  const Words words[] = {
      {"a", ".", "\xA1\xA3", " ", "\xA1\xEE", "\xA1\xA1", "\xB0\xA1", "\r", "\0"s},
      {".", "-", "\xA1\xA3", ".", "!", "\xA3\xBF", "\xA1\xEE", "\xB0\xA1", "="},
      {".", "-", "\xA1\xA3", ".", "!", "\xA3\xBF", "\xA1\xEE", " ", "=", "\t"}};
  const std::string end(2, '\0');
  std::mt19937 random(1);
  for (unsigned i = 0; i < 20000; ++i) {
    const std::string line = randomText(words[i % 3], i % 100 == 99 ? 3000 : 30, random);
    // NUL characters are taken away first, and a carriage return before a line end is part of it.
    std::string plain = line;
    std::erase(plain, '\0');
    if (plain.ends_with('\r')) continue;
    ASSERT_EQ(toHex(widened(textOf("gbk gbk no-simplify trim-punct", line)) + end),
              toHex(byLibrary("trimgPunc", widened(plain) + end)));
  }
  // Each long run after a blank goes, and leaves one more blank to hold, up to some.
  std::string held = "A\xA1\xA1";
  for (int i = 0; i < 700; ++i) held += ".........\xA1\xEE\xA1\xA1";
  EXPECT_EQ(disagreement("gbk gbk trim-punct", held, {7}), "");
}

TEST(Folding, IsTheLibrarys) {
  const Words words = {"Z",        "<",        "\xA3\xC1", "\xA1\xA1", "\xA1\xAB", "\xA3\xA4",
                       "\xB0\xA1", "\xA3\xA6", "\xA6\xA1", "\xA3\xBC", "\xA3\xBE"};
  const Words halfWidth = {"a", "9", "b", ".", " ", "-", "\xB0\xA1", "\xD6\xD0"};
  std::mt19937 random(2);
  for (int i = 0; i < 5000; ++i) {
    const std::string line = randomText(words, 60, random);
    ASSERT_EQ(textOf("gbk gbk no-simplify half-width fold-case", line),
              byLibrary("sbc2dbc counted case", line));
    ASSERT_EQ(textOf("gbk gbk no-simplify html", line), byLibrary("decodelibpage", line));
    const std::string cut = randomText(halfWidth, 80, random);
    const auto limit = static_cast<int>(1 + random() % 40);
    ASSERT_EQ(textOf("gbk gbk no-simplify truncate=" + std::to_string(limit), cut),
              byLibrary("sbc2dbc counted", cut, limit + 1))
        << toHex(cut) << " to " << limit;
  }
}

TEST(EveryInput, GivesTheSameInPiecesAndInLines) {
  std::mt19937 random(1);
  for (int i = 0; i < 150 && !HasFailure(); ++i) {
    for (const std::string& from : names(sgbk_sources)) {
      for (const std::string& to : names(sgbk_targets)) {
        const std::string kind = from == "auto" ? names(sgbk_sources)[random() % 8] : from;
        const std::string text = randomText(wordsOf(kind), random() % 8 == 0 ? 400 : 12, random);
        const Pieces pieces = {random() % 12, random() % 3, random() % 12, 1 + random() % 12};
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
