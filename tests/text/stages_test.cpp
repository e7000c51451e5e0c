// The telling cases of losses, replacements and references, and the stages against the library's
// operations on whole lines.

#include <gtest/gtest.h>

#include <algorithm>

#include "support/engine.h"
#include "support/hex.h"

namespace sgbk_test {
namespace {

using namespace std::string_literals;

TEST(Losses, TellingCases) {
  const struct {
    const char* setup;
    std::string text, out;
    const char* losses;
  } kRows[] = {
      // A pair leaves a blank, a stray byte nothing.
      {"big5 gbk", "a\n\x81\n\x81<\x80", "a\n\n<",
       "2:2:81 :0:malformed 3:4:81 :0:malformed 3:6:80 :0:malformed "},
      {"big5 gbk", "\xC5\xE9\x81\x41\xA1\x85\xA4", "\xCC\xE5\xA1\xA1",
       "1:2:81 41 :0:undefined 1:4:A1 85 :0:malformed 1:6:A4 :0:malformed "},
      {"big5 gbk half-width", "\x81\x41x", " x", "1:0:81 41 :0:undefined "},
      {"big5 utf-8 replace=\xE3\x80\x93", "\x81\x41\xFFz", "\xE3\x80\x93\xE3\x80\x93z",
       "1:0:81 41 :0:undefined 1:2:FF :0:malformed "},
      {"gbk gbk html replace=<&>", "\xFF", "&#60;&#38;&#62;", "1:0:FF :0:malformed "},
      {"gbk gbk", "\x84\x31\x95\x33\x94\x39\xFC\x36\xAA\xA1", "\xA1\xA1",
       "1:4:94 39 FC 36 :0:not in the target 1:8:AA A1 :0:undefined "},
      {"gbk utf-8", "\x94\x39\xFC\x36\xA2\xE3\xE3\x32\x9A\x36", "\xF0\x9F\x98\x80\xE2\x82\xAC",
       "1:6:E3 32 9A 36 :0:undefined "},
      {"hz gbk no-simplify", "~{G,*!\n~{<V\xFF<V", "\xC7\xAC\xA1\xA1\n\xBC\xD6\xBC\xD6",
       "1:4:2A 21 :0:undefined 2:11:FF :0:malformed "},
      {"utf-8 gbk", "\xEF\xBB\xBF\xE3\x80\x80\xC2\xA0", "\xA1\xA1\xA1\xA1", ""},
      {"utf-8 gbk", "a\xF0\x9F\x98\x80\n\xED\xA0\xBD\xED\xB8\x80\xE4\xB8", "a\n",
       "1:1:F0 9F 98 80 :1F600:not in the target 2:6:ED A0 BD ED B8 80 :1F600:malformed 2:12:E4 B8 "
       ":0:malformed "},
      {"ucs-2le utf-8", "\xFF\xFE\x3D\xD8\x00\xDE\n\0\x00\xDC\x01"s, "\xF0\x9F\x98\x80\n",
       "2:8:00 DC :0:malformed 2:10:01 :0:malformed "},
      // The white square is no loss where it was in the text.
      {"gbk big5", "\xD6\xD0\x81\x40\xA1\xF5", "\xA4\xA4 \xA1\xBC",
       "1:2:81 40 :0:not in the target "},
      // Replaced, by code points and by references, where the target lacks it.
      {"utf-8 gbk", "\xC2\xA9\xE2\x84\xA2\xC2\xBC\xC2\xBD", "(C)TM1/41/2",
       "1:0:C2 A9 :A9:replaced 1:2:E2 84 A2 :2122:replaced 1:5:C2 BC :BC:replaced 1:7:C2 BD "
       ":BD:replaced "},
      {"ucs-2be gbk strict", "\x00\xA9"s, "(C)", "1:0:00 A9 :A9:replaced "},
      {"utf-8 gb18030 entities", "\xC2\xA9&copy;", "\x81\x30\x84\x38\x81\x30\x84\x38", ""},
      {"gbk gbk entities", "&copy;&trade;", "(C)TM",
       "1:0:26 63 6F 70 79 3B :A9:replaced 1:6:26 74 72 61 64 65 3B :2122:replaced "},
      {"gbk gbk entities html", "&acute;", "&#39;", "1:0:26 61 63 75 74 65 3B :B4:replaced "},
      // What the target lacks stays a reference.
      {"utf-8 gbk entities", "&#128512;&zwj;&#x4e02;", "&#128512;&zwj;\x81\x40", ""},
      {"utf-8 big5 entities", "&#x4e02;", "&#x4e02;", ""},
      {"utf-8 utf-8 entities", "&#128512;&#x4e02;", "\xF0\x9F\x98\x80\xE4\xB8\x82", ""},
      {"ucs-2be utf-8 entities", "\0&\0l\0t\0;"s, "<", ""},
  };
  for (const auto& row : kRows) {
    const Converted result = convert(row.setup, row.text);
    EXPECT_EQ(toHex(result.text), toHex(row.out)) << row.setup;
    EXPECT_EQ(described(result.losses), row.losses) << row.setup;
    EXPECT_EQ(result.result, SGBK_OK);
  }
}

TEST(References, TellingCases) {
  const struct {
    const char *text, *plain, *html;
  } kRows[] = {
      {"&lt;p&gt; &amp;amp;", "<p> &amp;", "&lt;p&gt; &amp;amp;"},
      {"&middot;&#x4e2D;&#20013", "\xA1\xA4\xD6\xD0\xD6\xD0", "\xA1\xA4\xD6\xD0\xD6\xD0"},
      // Without a semicolon, but neither in a longer word nor in an address.
      {"&copy2015 &notify ?a&copy=1 &lt", "(C)2015 &notify ?a&copy=1 <",
       "(C)2015 &notify ?a&copy=1 &lt;"},
      {"&quot;&#39;&#65;&nbsp;|", "\"'A\xA1\xA1|", "&quot;&#39;A |"},
      // What would break lines, has no form, or is no reference; the longest of all, and a longer
      // one.
      {"&#10;&#0;&#127;&#55357;&eacut; &;&#;&#x;& &AMP;&#99999999999999999999;", nullptr, nullptr},
      {"&#00000000000000000000000000065;", "A", "A"},
      {"&#000000000000000000000000000000065;", nullptr, nullptr},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(textOf("gbk gbk entities", row.text), row.plain != nullptr ? row.plain : row.text);
    EXPECT_EQ(textOf("gbk gbk entities html", row.text), row.html != nullptr ? row.html : row.text);
  }
}

using Words = std::vector<std::string>;
std::string randomLine(const Words& words, std::size_t count, std::mt19937& random) {
  std::string line;
  while (count-- > 0) line += words[random() % words.size()];
  return line;
}

TEST(Trimming, IsTheLibrarys) {
  const Words words[] = {
      {"a", ".", "\xA1\xA3", " ", "\xA1\xEE", "\xA1\xA1", "\xB0\xA1", "\r", "\0"s},
      {".", "-", "\xA1\xA3", ".", "!", "\xA3\xBF", "\xA1\xEE", "\xB0\xA1", "="},
      {".", "-", "\xA1\xA3", ".", "!", "\xA3\xBF", "\xA1\xEE", " ", "=", "\t"}};
  std::mt19937 random(1);
  for (unsigned i = 0; i < 20000; ++i) {
    const std::string line =
        randomLine(words[i % 3], random() % (i % 100 == 99 ? 3000 : 30), random);
    // NUL characters are taken away first, and a carriage return before a line end is part of it.
    std::string plain = line;
    std::erase(plain, '\0');
    if (plain.ends_with('\r')) continue;
    const std::string trimmed = byLibrary("trimgPunc", widened(plain) + std::string(2, '\0'));
    ASSERT_EQ(toHex(widened(textOf("gbk gbk no-simplify trim-punct", line))),
              toHex(trimmed.substr(0, trimmed.size() - 2)))
        << toHex(line);
  }
  EXPECT_EQ(textOf("gbk gbk trim-punct",
                   "  A\xA3\xC1 \xA1\xA1\xA3\xC2\xA1\xA1 B\t\tc \r\n\r\n d\xA1\xEE e"),
            "A\xA3\xC1 \xA3\xC2\xA1\xA1"
            "B\tc\r\n\r\nd e");
  // Each long run after a blank goes, and leaves one more blank to hold.
  std::string held = "A\xA1\xA1";
  for (int i = 0; i < 40; ++i) held += ".........\xA1\xEE\xA1\xA1";
  EXPECT_EQ(disagreement("gbk gbk trim-punct", held + "B", {7}), "");
}

TEST(Folding, IsTheLibrarys) {
  const Words words = {"Z",        "<",        "\xA3\xC1", "\xA1\xA1", "\xA1\xAB", "\xA3\xA4",
                       "\xB0\xA1", "\xA3\xA6", "\xA6\xA1", "\xA3\xBC", "\xA3\xBE"};
  const Words halfWidth = {"a", "9", "b", ".", " ", "-", "\xB0\xA1", "\xD6\xD0"};
  std::mt19937 random(2);
  for (int i = 0; i < 5000; ++i) {
    const std::string line = randomLine(words, random() % 60, random);
    ASSERT_EQ(textOf("gbk gbk no-simplify half-width fold-case", line),
              byLibrary("sbc2dbc counted case", line));
    ASSERT_EQ(textOf("gbk gbk no-simplify html", line), byLibrary("decodelibpage", line));
    const std::string cut = randomLine(halfWidth, random() % 80, random);
    const auto limit = static_cast<int>(1 + random() % 40);
    ASSERT_EQ(textOf("gbk gbk no-simplify truncate=" + std::to_string(limit), cut),
              byLibrary("sbc2dbc counted", cut, limit + 1))
        << toHex(cut) << " to " << limit;
  }
  // Cutting folds nothing, and four bytes stay together.
  EXPECT_EQ(textOf("gbk gbk truncate=10", "\xA3\xC1\xA1\xA1 \t\xA3\xC2 word\r\nshort\n"),
            "\xA3\xC1\xA1\xA1 \t...\r\nshort\n");
  EXPECT_EQ(textOf("utf-8 utf-8 truncate=8", "ab\xF0\x9F\x98\x80\xF0\x9F\x98\x80"), "ab...");
}

}  // namespace
}  // namespace sgbk_test
