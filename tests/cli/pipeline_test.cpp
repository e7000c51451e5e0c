// What must hold for every input: the library's text comes out whole, lines stay lines, and the
// places where the input is cut do not show.

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "conversions.h"
#include "loss_report.h"
#include "support/hex.h"

namespace cli_test {
namespace {

// Whole characters beside bytes that break them.
const std::string kAscii = "61,5A,3C,20,09,0A,0D 0A,0D,2E,30,26,26 61 6D 70,6C 74 3B,26 23 36 35,";
const std::string kPairs = kAscii +
                           "A1 40,A1 A1,B0 A1,F3 77,C5 E9,A3 C1,A1 B9,FE FE,AA A1,81 30,"
                           "84 31 95 30,81 40,81,80,FF,FE,7F,A2 E3";
const std::string kUnits =
    "61 00,5A 00,3C 00,20 00,0A 00,0D 00,26 00,2D 4E,D4 9A,FF FE,3D D8,00 DE,E9 00,21 FF,00 30,"
    "3D D8 00 DE,05 0A,0A 01";

const struct Encoding {
  std::string name, operation, words;
} kEncodings[] = {
    {"big5", "b52sgbk", kPairs},
    {"gbk", "t2sgbk", kPairs},
    {"utf-8", "utf82sgbk",
     kAscii + "E9 AB 94,E4 B8 AD,C3 A9,C2 B7,EF BB BF,ED A0 80,ED A0 80 ED B0 80,E4,B8,80,C3,C0 "
              "8A,E0 81 81,"
              "EF BC A1,F0 9F,FF,F4 90 80 80"},
    {"hz", "hz2sgbk",
     kAscii + "7E 7B,7E 7D,7E 7E,7E 0A,7E,7E 7B 3C 56 7E 7D,7E 7B 2A 21 7E 7D,3C 56,21 21,7E 78,"
              "B0 A1,80,FE"},
    {"ucs-2le", "uc2sgbk_DB", kUnits},
    {"ucs-2be", "uc2sgbk_DB", kUnits}};

std::string inByteOrderOf(const Encoding& encoding, std::string text) {
  for (std::size_t i = 1; i < text.size() && encoding.name == "ucs-2be"; i += 2) {
    std::swap(text[i - 1], text[i]);
  }
  return text;
}

const Words kOptions = {
    "", "-t gbk-wide", "-t big5", "-EP", "-EC --html", "-EW --truncate=9 -t big5", "--no-simplify"};

// check(encoding, options, text) for random texts of every encoding.
template <class Check>
void forTexts(int count, const Words& allOptions, Check check) {
  std::mt19937 random(1);
  for (const Encoding& encoding : kEncodings) {
    Words words;
    std::istringstream in(encoding.words);
    for (std::string hex; std::getline(in, hex, ',');) words.push_back(sgbk_test::fromHex(hex));
    for (const std::string& more : allOptions) {
      const bool canKeepForms = encoding.name == "gbk" || encoding.name == "hz";
      if (more == "--no-simplify" && !canKeepForms) continue;
      for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
        const auto text = inByteOrderOf(encoding, randomText(words, random() % 60, random));
        const std::string options = "-f " + encoding.name + " " + more;
        SCOPED_TRACE(options + " of " + cli::inHex(text));
        check(encoding, options, text);
      }
    }
  }
}

TEST(Pipeline, TextIsTheLibrarys) {
  forTexts(4000, {""}, [](const auto& encoding, const auto& options, const auto& text) {
    // Forms that the command knows and the library does not.
    if (encoding.name == "utf-8" && text.find_first_of("\xF0\xF4") != text.npos) return;
    const auto byLibraryAlone = [&](const std::string& part) {
      return byLibrary(encoding.operation, inByteOrderOf(encoding, part));
    };
    EXPECT_EQ(convert(text, options + "-t gbk-wide").text, byLibraryAlone(text));
    const std::string line = text.substr(0, text.find_first_of("\r\n"));
    const std::string written = convert(line, options).text;
    EXPECT_EQ(convert(written, "-f gbk").losses, "");
    // Codes that are no characters are blanks where lines are kept.
    const std::string expected = byLibraryAlone(line);
    if (expected.find('\0') != expected.npos) return;
    EXPECT_EQ(byLibrary("t2sgbk", written), byLibrary("t2sgbk", convert(expected, "-f gbk").text));
  });
}

TEST(Pipeline, SplitPointsDoNotShow) {
  forTexts(25, kOptions, [](const auto&, const auto& options, const auto& text) {
    const Converted whole = convert(text, options);
    for (std::size_t reads = 1; reads < text.size(); ++reads) {
      EXPECT_EQ(convert(text, options, reads), whole) << reads;
    }
    EXPECT_EQ(convert(text, options + " --strict"), whole);
    // A line that is longer than the buffer; trimming takes each part for a line.
    if (options.ends_with("P")) return;
    EXPECT_EQ(convert(text, options, SIZE_MAX, 8).text, whole.text);
  });
}

TEST(Pipeline, LinesDependOnNothingButThemselves) {
  forTexts(60, kOptions, [](const auto& encoding, const auto& options, const auto& text) {
    if (options.ends_with("wide")) return;
    const cli::LineEnds lineEnds(*cli::sourceNamed(encoding.name));
    const std::string whole = convert(text, options).text;
    std::string joined;
    for (std::size_t begin = 0, end; begin < text.size(); begin = end) {
      end = lineEnds.behindFirst(text, begin);
      if (end == 0) end = text.size();
      joined += convert(text.substr(begin, end - begin), options).text;
    }
    EXPECT_EQ(whole, joined);
    EXPECT_EQ(std::ranges::count(whole, '\n'), lineEnds.count(text));
  });
}

}  // namespace
}  // namespace cli_test
