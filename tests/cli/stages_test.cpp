// The stages against the library operations behind them, and the telling cases of those that have
// none of the same shape.

#include <gtest/gtest.h>

#include "conversions.h"
#include "loss_report.h"

namespace cli_test {
namespace {

std::string gbk(const std::string& text, const std::string& options) {
  return convert(text, "-f gbk --no-simplify " + options).text;
}

TEST(Trim, KeepsWhatTheLibraryKeeps) {
  // Long enough for every class to be numbered through several times.
  const Words words[] = {{"a", ".", "\xA1\xA3", " ", "\xA1\xEE", "\xA1\xA1", "\xB0\xA1"},
                         {".", "-", "\xA1\xA3", ".", "!", "\xA3\xBF", "\xA1\xEE", "\xB0\xA1", "="},
                         {".", "-", "\xA1\xA3", ".", "!", "\xA3\xBF", "\xA1\xEE", " ", "="}};
  const auto wide = [](const std::string& line) {
    return byLibrary("t2sgbk", line) + std::string(2, '\0');
  };
  std::mt19937 random(1);
  for (unsigned i = 0; i < 3000; ++i) {
    const std::string line = randomText(words[i % 3], random() % (i % 10 == 0 ? 3000 : 60), random);
    ASSERT_EQ(wide(gbk(line, "-P")), byLibrary("trimgPunc", wide(line))) << cli::inHex(line);
  }
}

TEST(Trim, LeavesTheFormOfWhatItKeeps) {
  EXPECT_EQ(gbk("  A\xA3\xC1 \xA1\xA1\xA3\xC2\xA1\xA1 B\t\tc \r\n\r\n d\xA1\xEE e", "-P"),
            "A\xA3\xC1 \xA3\xC2\xA1\xA1"
            "B\tc\r\n\r\nd e");
}

TEST(Folding, IsTheLibrarys) {
  const Words words = {"Z",        "<",        "\xA3\xC1", "\xA1\xA1", "\xA1\xAB",
                       "\xA3\xA4", "\xB0\xA1", "\xA3\xA6", "\xA6\xA1"};
  const Words halfWidth = {"a", "9", "b", ".", " ", "-", "\xB0\xA1", "\xD6\xD0"};
  std::mt19937 random(2);
  for (int i = 0; i < 2000; ++i) {
    const std::string line = randomText(words, random() % 60, random);
    ASSERT_EQ(gbk(line, "-WC"), byLibrary("sbc2dbc counted case", line)) << cli::inHex(line);
    ASSERT_EQ(gbk(line, "--html"), byLibrary("decodelibpage", line)) << cli::inHex(line);
    const std::string cut = randomText(halfWidth, random() % 80, random);
    const auto limit = static_cast<int>(1 + random() % 40);
    ASSERT_EQ(gbk(cut, "--truncate=" + std::to_string(limit)),
              byLibrary("sbc2dbc counted", cut, limit + 1))
        << cli::inHex(cut) << " to " << limit;
  }
  // Cutting folds nothing.
  EXPECT_EQ(gbk("\xA3\xC1\xA1\xA1 \t\xA3\xC2 word\r\nshort\n", "--truncate=10"),
            "\xA3\xC1\xA1\xA1 \t...\r\nshort\n");
}

TEST(Entities, TellingCases) {
  const struct {
    const char *text, *plain, *html;
  } kRows[] = {
      {"&lt;p&gt; &amp;amp;", "<p> &amp;", "&lt;p&gt; &amp;amp;"},
      {"&middot;&#x4e2D;&#20013", "\xA1\xA4\xD6\xD0\xD6\xD0", "\xA1\xA4\xD6\xD0\xD6\xD0"},
      // Without a semicolon, but neither in a longer word nor in an address.
      {"&copy2015 &notify ?a&copy=1 &lt", "(C)2015 &notify ?a&copy=1 <",
       "(C)2015 &notify ?a&copy=1 &lt;"},
      {"&quot;&#39;&#65;&nbsp;|", "\"'A\xA1\xA1|", "&quot;&#39;A |"},
      // What would break lines, has no form, or is no reference.
      {"&#10;&#0;&#127;&#128512;&#55357;&eacut; &;&#;&#x;& &AMP;&zwj;&#99999999999999999999;",
       nullptr, nullptr},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(gbk(row.text, "-E"), row.plain != nullptr ? row.plain : row.text);
    EXPECT_EQ(gbk(row.text, "-E --html"), row.html != nullptr ? row.html : row.text);
  }
}

TEST(Losses, TellingCases) {
  using namespace std::string_literals;
  const struct {
    const char* options;
    std::string text, out;
    const char* losses;
  } kRows[] = {
      {"-f big5", "a\n\x81\n\x81<\x80", "a\n\n\xA1\xA1",
       "2:2:81:malformed 3:4:81 3C:malformed 3:6:80:malformed "},
      {"-f big5", "\xC5\xE9\x81\x41\xA1\x85\xA4", "\xCC\xE5\xA1\xA1\xA1\xA1",
       "1:2:81 41:undefined 1:4:A1 85:malformed 1:6:A4:malformed "},
      {"-f gbk", "\x84\x31\x95\x33\xA1\xA1\x94\x39\xFC\x36\xAA\xA1",
       "\xA1\xA1\xA1\xA1\xA1\xA1\xA1\xA1", "1:6:94 39 FC 36:undefined 1:10:AA A1:undefined "},
      {"-f gbk --no-simplify", "\xF3\x77\xAA\xA1", "\xF3\x77\xA1\xA1", "1:2:AA A1:undefined "},
      {"-f hz --no-simplify", "~{G,*!", "\xC7\xAC\xA1\xA1", "1:4:2A 21:undefined "},
      {"-f utf-8", "\xEF\xBB\xBF\xE3\x80\x80\xC2\xA0", "\xA1\xA1\xA1\xA1", ""},
      {"-f utf-8", "a\xF0\x9F\x98\x80\n\xED\xA0\xBD\xED\xB8\x80\xF4\x90\x80\x80", "a\n",
       "1:1:F0 9F 98 80:undefined 2:6:ED A0 BD ED B8 80:undefined "
       "2:12:F4 90 80:malformed 2:15:80:malformed "},
      {"-f utf-8", "\xE0\xA8\x85\xE9\xAB\x94\xC0\x8A\xE4\xB8\n\xB7\xE0\x80\x80",
       "\xCC\xE5\xA1\xA1\n\xA1\xA1",
       "1:0:E0 A8 85:undefined 1:6:C0 8A:malformed 1:8:E4 B8:malformed 2:11:B7:malformed "
       "2:12:E0 80 80:malformed "},
      {"-f ucs-2le", "\xFF\xFE\x3D\xD8\x00\xDE\n\0\x00\xDC\x00\x30\x01"s, "\n\xA1\xA1",
       "1:2:3D D8 00 DE:undefined 2:8:00 DC:malformed 2:12:01:malformed "},
      {"-f hz", "~{!!<V*!<V~\n<\n~{<V\r<V\n~~~x~}\xB0\xA1\xFF<~",
       "\xA1\xA1\xBC\xD6\xA1\xA1\xBC\xD6\n<\n\xBC\xD6\r<V\n~\xB0\xA1\xA1\xA1",
       "1:6:2A 21:undefined 1:10:7E:malformed 4:24:7E 78:malformed 4:26:7E 7D:malformed "
       "4:28:B0 A1:malformed 4:30:FF 3C:malformed 4:32:7E:malformed "},
      // What Big5 does not have, between characters that it has and the white square that stands
      // for it; also when it is found after a loss behind it, and when it came by a reference.
      {"-f gbk -t big5", "a\n\xD6\xD0\x81\x40\xA1\xF5\n\x81\x40\x81\x40",
       "a\n\xA4\xA4\xA1\xBC\xA1\xBC\n\xA1\xBC\xA1\xBC",
       "2:4:81 40:undefined 3:9:81 40:undefined 3:11:81 40:undefined "},
      {"-f gbk -t big5", "\x81\x40\n\x80\n", "\xA1\xBC\n\n",
       "1:0:81 40:undefined 2:3:80:malformed "},
      {"-f utf-8 -t big5 -E", "x\ny&#x4E02;", "x\ny\xA1\xBC", "2:2:81 40:undefined "},
  };
  for (const auto& row : kRows) {
    const Converted result = convert(row.text, row.options);
    EXPECT_EQ(cli::inHex(result.text), cli::inHex(row.out)) << cli::inHex(row.text);
    EXPECT_EQ(result.losses, row.losses) << cli::inHex(row.text);
  }
  // A surrogate pair is one loss wherever it stands in a long text.
  for (std::string text : {""s, "a\0"s}) {
    for (int i = 0; i < 3000; ++i) text += "\x3D\xD8\x00\xDE"s;
    const std::string account = convert(text, "-f ucs-2le").summary;
    EXPECT_NE(account.find("(3000 undefined, 0 malformed)"), account.npos) << account;
  }
  const std::string summary = convert("\x81\x40\n\x80\n", "-f gbk -t big5").summary;
  EXPECT_TRUE(summary.ends_with("first: line 1, byte 0: 81 40")) << summary;
}

}  // namespace
}  // namespace cli_test
