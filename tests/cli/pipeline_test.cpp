// What must hold for every input: the library's text comes out whole, lines stay lines, and the
// places where the input is cut do not show.

#include <gtest/gtest.h>

#include <cstring>

#include "bytes.h"
#include "convert_in_pieces.h"
#include "pipeline.h"

namespace cli_test {
namespace {

using cli::Source;
using cli::Target;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines(1);
  for (const char c : text) {
    if (c == '\n' || c == '\r') {
      lines.emplace_back();
    } else {
      lines.back() += c;
    }
  }
  return lines;
}

// Double-byte text with a blank for every code that is no character; a pair of question marks for
// the library's mark of an unmapped one.
std::string comparable(const std::string& wide) {
  std::string result;
  for (std::size_t i = 0; i < wide.size(); i += 2) {
    const gchar_t unit = cli::unitAt(wide.data() + i);
    if (unit == 0x3F3F) {
      result += "\xA3\xBF\xA3\xBF";
    } else {
      result += cli::isGbkCharacter(unit) ? wide.substr(i, 2) : "\xA1\xA1";
    }
  }
  return result;
}

// Whether it may hold a form that the command knows and the library does not.
bool holdsFourByteForm(Source source, const std::string& text) {
  return source == Source::utf8 && text.find_first_of("\xF0\xF4") != std::string::npos;
}

TEST(Pipeline, WideTextIsTheLibrarysText) {
  std::mt19937 random(1);
  for (const Source source : kSources) {
    for (int i = 0; i < 2000; ++i) {
      const std::string text = randomText(source, 1 + random() % 60, random);
      if (holdsFourByteForm(source, text)) continue;
      ASSERT_EQ(convert(text, plain(source, Target::gbkWide)).text, libraryText(source, text))
          << nameOf(source) << ' ' << cli::inHex(text);
    }
  }
}

TEST(Pipeline, EachLineIsTheLibrarysTextOfThatLine) {
  std::mt19937 random(2);
  for (const Source source : {Source::big5, Source::gbk, Source::utf8, Source::hz}) {
    for (int i = 0; i < 3000; ++i) {
      const std::string text = randomText(source, 1 + random() % 60, random);
      if (holdsFourByteForm(source, text)) continue;
      const auto in = linesOf(text);
      const std::string written = convert(text, plain(source)).text;
      ASSERT_EQ(convert(written, plain(Source::gbk)).losses, "") << cli::inHex(text);
      const auto out = linesOf(written);
      ASSERT_EQ(in.size(), out.size()) << cli::inHex(text);
      for (std::size_t line = 0; line < in.size(); ++line) {
        ASSERT_EQ(comparable(libraryText(Source::gbk, out[line])),
                  comparable(libraryText(source, in[line])))
            << nameOf(source) << ' ' << cli::inHex(in[line]) << " in " << cli::inHex(text);
      }
    }
  }
}

std::vector<cli::Options> severalOptions(Source source) {
  std::vector<cli::Options> all = {plain(source), plain(source, Target::gbkWide),
                                   plain(source, Target::big5)};
  cli::Options options = plain(source);
  options.trim = options.entities = true;
  all.push_back(options);
  options.html = options.foldCase = true;
  options.truncate = 9;
  options.to = Target::big5;
  all.push_back(options);
  if (source == Source::gbk || source == Source::hz) {
    all.push_back(plain(source));
    all.back().simplify = false;
  }
  return all;
}

TEST(Pipeline, SplitPointsDoNotShow) {
  std::mt19937 random(3);
  for (const Source source : kSources) {
    for (const auto& options : severalOptions(source)) {
      for (int i = 0; i < 25; ++i) {
        const std::string text = randomText(source, 1 + random() % 40, random);
        const Converted whole = convert(text, options);
        for (std::size_t at = 1; at < text.size(); ++at) {
          const Converted cut = convertInPieces(text, options, {at, SIZE_MAX});
          ASSERT_EQ(cut, whole) << nameOf(source) << ' ' << at << " of " << cli::inHex(text);
        }
        ASSERT_EQ(convertInPieces(text, options, {1}), whole)
            << nameOf(source) << ' ' << cli::inHex(text);
        cli::Options byLines = options;
        byLines.strict = true;
        ASSERT_EQ(convert(text, byLines), whole) << nameOf(source) << ' ' << cli::inHex(text);
      }
    }
  }
}

TEST(Pipeline, LinesDependOnNothingButThemselves) {
  std::mt19937 random(4);
  for (const Source source : kSources) {
    const cli::LineEnds lineEnds(source);
    for (const auto& options : severalOptions(source)) {
      if (options.to == Target::gbkWide) continue;
      for (int i = 0; i < 60; ++i) {
        const std::string text = randomText(source, 1 + random() % 80, random);
        const std::string whole = convert(text, options).text;
        std::string joined;
        for (std::size_t begin = 0; begin < text.size();) {
          std::size_t end = lineEnds.behindFirst(text, begin);
          if (end == 0) end = text.size();
          joined += convert(text.substr(begin, end - begin), options).text;
          begin = end;
        }
        ASSERT_EQ(whole, joined) << nameOf(source) << ' ' << cli::inHex(text);
        ASSERT_EQ(static_cast<std::size_t>(std::count(whole.begin(), whole.end(), '\n')),
                  lineEnds.count(text))
            << nameOf(source) << ' ' << cli::inHex(text);
      }
    }
  }
}

}  // namespace
}  // namespace cli_test
