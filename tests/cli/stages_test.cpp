// The stages against the library operations behind them, and the telling cases of those that have
// none of the same shape.

#include <gtest/gtest.h>

#include "bytes.h"
#include "chunker.h"
#include "convert_in_pieces.h"
#include "stage.h"

namespace cli_test {
namespace {

using cli::Source;
using cli::Target;

std::string gbk(const std::string& text, void (*choose)(cli::Options&)) {
  cli::Options options = plain(Source::gbk);
  options.simplify = false;
  choose(options);
  return convert(text, options).text;
}

std::string randomLine(std::size_t size, std::mt19937& random, const std::vector<std::string>& of) {
  std::string line;
  while (size-- != 0) line += of[random() % of.size()];
  return line;
}

std::string folded(const std::string& line, std::size_t room, bool foldCase) {
  std::string dest(room, '\0');
  dest.resize(static_cast<std::size_t>(sbc2dbc(line.data(), static_cast<int>(line.size()),
                                               dest.data(), static_cast<int>(room), foldCase)));
  return dest;
}

TEST(Trim, KeepsWhatTheLibraryKeeps) {
  // Long enough for every class to be numbered through several times.
  const std::vector<std::string> words[] = {
      {"a", ".", "\xA1\xA3", " ", "\xA1\xEE", "\xA1\xA1", "\xB0\xA1"},
      {".", "-", "\xA1\xA3", ".", "!", "\xA3\xBF", "\xA1\xEE", "\xB0\xA1", "="},
      {".", "-", "\xA1\xA3", ".", "!", "\xA3\xBF", "\xA1\xEE", " ", "="}};
  std::mt19937 random(1);
  for (unsigned i = 0; i < 3000; ++i) {
    const std::string line = randomLine(random() % (i % 10 == 0 ? 2000 : 40), random, words[i % 3]);
    const std::string wide = libraryText(Source::gbk, line) + std::string(2, '\0');
    std::string expected = wide;
    expected.resize(2 * trimgPunc(reinterpret_cast<const gchar_t*>(wide.data()),
                                  reinterpret_cast<gchar_t*>(expected.data())) -
                    2);
    const std::string trimmed = gbk(line, [](cli::Options& o) { o.trim = true; });
    ASSERT_EQ(libraryText(Source::gbk, trimmed), expected) << cli::inHex(line);
  }
}

TEST(Trim, LeavesTheFormOfWhatItKeeps) {
  const auto trim = [](cli::Options& o) { o.trim = true; };
  EXPECT_EQ(gbk("  A\xA3\xC1 \xA1\xA1\xA3\xC2\xA1\xA1 B\t\tc \r\n\r\n d", trim),
            "A\xA3\xC1 \xA3\xC2\xA1\xA1"
            "B\tc\r\n\r\nd");
  EXPECT_EQ(gbk("a\xA1\xEE b", trim), "a b");
  // More characters than stand-ins, each one another.
  std::string marks;
  for (char c = '\xA1'; c != '\xFF'; ++c) marks += std::string("x!") + "\xA3" + c;
  EXPECT_EQ(gbk(marks, trim), marks);
}

TEST(Width, IsTheLibrarysFolding) {
  std::mt19937 random(2);
  for (int i = 0; i < 500; ++i) {
    const std::string line = randomLine(random() % 40, random,
                                        {"a", "<", "\xA3\xC1", "\xA1\xA1", "\xA1\xAB", "\xA3\xA4",
                                         "\xB0\xA1", "\xA3\xA6", "\xA6\xA1"});
    EXPECT_EQ(gbk(line, [](cli::Options& o) { o.halfWidth = o.foldCase = true; }),
              folded(line, line.size() + 1, true));
    std::string page(3 * line.size() + 3, '\0');
    page.resize(static_cast<std::size_t>(
        decodelibpage(line.data(), line.size(), page.data(), page.size(), false)));
    EXPECT_EQ(gbk(line, [](cli::Options& o) { o.html = true; }), page);
  }
}

TEST(Truncate, CutsWhereTheLibraryCuts) {
  std::mt19937 random(3);
  for (int i = 0; i < 2000; ++i) {
    const std::string line =
        randomLine(random() % 60, random, {"a", "9", "b", ".", " ", "-", "\xB0\xA1", "\xD6\xD0"});
    cli::Options options = plain(Source::gbk);
    options.truncate = 1 + random() % 40;
    ASSERT_EQ(convert(line + "\n", options).text, folded(line, *options.truncate + 1, false) + "\n")
        << cli::inHex(line);
  }
}

TEST(Truncate, FoldsNothingAndDropsTheRestOfALongLine) {
  const auto cut = [](cli::Options& o) { o.truncate = 10; };
  EXPECT_EQ(gbk("\xA3\xC1\xA1\xA1 \t\xA3\xC2 word\r\nshort\n", cut),
            "\xA3\xC1\xA1\xA1 \t...\r\nshort\n");
  // Also when nothing at all comes behind it.
  EXPECT_EQ(gbk(std::string(2 * cli::Chunker::kCapacity, '-'), cut), "-------...");
  const std::string line(3 << 20, '-');
  EXPECT_EQ(gbk(line + "\n" + line + "\nend", cut), "-------...\n-------...\nend");
}

TEST(Stages, PartsOfALineDoNotShow) {
  std::mt19937 random(4);
  const std::vector<std::string> words = {"a",  "\n",   "&", "lt",       ";",        "#65", "&amp",
                                          "\r", "\r\n", ".", "\xB0\xA1", "\xA3\xBC", "Z",   "&gt;"};
  const std::vector<std::function<std::unique_ptr<cli::Stage>()>> stages = {
      [] { return cli::makeEntityStage(converter(), cli::Markup::plain); },
      [] { return cli::makeWidthStage(cli::Markup::escaped); }, [] { return cli::makeCaseStage(); },
      [] { return cli::makeTruncateStage(5); }, [] { return cli::makeReferenceStage(); }};
  for (int i = 0; i < 3000; ++i) {
    const std::string first = randomLine(random() % 6, random, words);
    const std::string second = randomLine(random() % 6, random, words);
    const std::string third = randomLine(random() % 9, random, words);
    for (const auto& make : stages) {
      std::string whole;
      std::string joined;
      make()->apply(first + second + third, false, whole);
      const auto stage = make();
      for (const auto& part : {first, second}) stage->apply(part, !part.ends_with('\n'), joined);
      stage->apply(third, false, joined);
      ASSERT_EQ(joined, whole) << cli::inHex(first) << '|' << cli::inHex(second + '|' + third);
    }
  }
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
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(gbk(row.text, [](cli::Options& o) { o.entities = true; }), row.plain);
    EXPECT_EQ(gbk(row.text, [](cli::Options& o) { o.entities = o.html = true; }), row.html);
  }
  // What would break lines, has no form, or is no reference.
  const char* const kept =
      "&#10;&#0;&#128512;&#55357;&eacut; &;&#;&#x;& &AMP;&zwj;&#99999999999999999999;";
  EXPECT_EQ(gbk(kept, [](cli::Options& o) { o.entities = o.html = true; }), kept);
}

TEST(Losses, TellingCases) {
  using namespace std::string_literals;
  const struct {
    Source source;
    std::string text, out;
    const char* losses;
  } kRows[] = {
      {Source::big5, "a\n\x81\n\x81<\x80", "a\n\n\xA1\xA1",
       "2:2:81:malformed 3:4:81 3C:malformed 3:6:80:malformed "},
      {Source::big5, "\xC5\xE9\x81\x41\xA1\x85\xA4", "\xCC\xE5\xA1\xA1\xA1\xA1",
       "1:2:81 41:undefined 1:4:A1 85:malformed 1:6:A4:malformed "},
      {Source::gbk, "\x84\x31\x95\x33\xA1\xA1\x94\x39\xFC\x36\xAA\xA1",
       "\xA1\xA1\xA1\xA1\xA1\xA1\xA1\xA1", "1:6:94 39 FC 36:undefined 1:10:AA A1:undefined "},
      {Source::utf8, "\xEF\xBB\xBF\xE3\x80\x80\xC2\xA0", "\xA1\xA1\xA1\xA1", ""},
      {Source::utf8, "a\xF0\x9F\x98\x80\n\xED\xA0\xBD\xED\xB8\x80z", "a\nz",
       "1:1:F0 9F 98 80:undefined 2:6:ED A0 BD ED B8 80:undefined "},
      {Source::utf8, "\xE0\xA8\x85\xE9\xAB\x94\xC0\x8A\xE4\xB8\n\xB7", "\xCC\xE5\xA1\xA1\n",
       "1:0:E0 A8 85:undefined 1:6:C0 8A:malformed 1:8:E4 B8:malformed 2:11:B7:malformed "},
      {Source::ucs2le, "\xFF\xFE\x3D\xD8\x00\xDE\n\0\x00\xDC\x00\x30\x01"s, "\n\xA1\xA1",
       "1:2:3D D8 00 DE:undefined 2:8:00 DC:malformed 2:12:01:malformed "},
      {Source::hz, "~{!!<V*!<V~\n<\n~{<V<\n~~~x~}\xB0\xA1~",
       "\xA1\xA1\xBC\xD6\xA1\xA1\xBC\xD6\n<\n\xBC\xD6\n~\xB0\xA1",
       "1:6:2A 21:undefined 1:10:7E:malformed 3:18:3C:malformed 4:22:7E 78:malformed "
       "4:24:7E 7D:malformed 4:26:B0 A1:malformed 4:28:7E:malformed "},
  };
  for (const auto& row : kRows) {
    const Converted result = convert(row.text, plain(row.source));
    EXPECT_EQ(cli::inHex(result.text), cli::inHex(row.out)) << cli::inHex(row.text);
    EXPECT_EQ(result.losses, row.losses) << cli::inHex(row.text);
  }
}

TEST(Losses, TheTargetsAreFoundInTheInput) {
  // A character of GBK that Big5 does not have, between ones that it has, and the white square
  // that stands for it.
  const Converted result =
      convert("a\n\xD6\xD0\x81\x40\xA1\xF5\n\x81\x40\x81\x40", plain(Source::gbk, Target::big5));
  EXPECT_EQ(result.losses, "2:4:81 40:undefined 3:9:81 40:undefined 3:11:81 40:undefined ");
  EXPECT_EQ(result.summary,
            "3 of 8 characters lost (3 undefined, 0 malformed); first: line 2, byte 4: 81 40");
  // Found after one that stands behind it.
  EXPECT_EQ(convert("\x81\x40\n\x80\n", plain(Source::gbk, Target::big5)).losses,
            "1:0:81 40:undefined 2:3:80:malformed ");
  cli::Options options = plain(Source::utf8, Target::big5);
  options.entities = true;
  EXPECT_EQ(convert("x\ny&#x4E02;", options).losses, "2:2:81 40:undefined ");
}

}  // namespace
}  // namespace cli_test
