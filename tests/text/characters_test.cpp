// Every character of every source, against the library's own operations, the C library's iconv, and
// what must hold of all of them.

#include <gtest/gtest.h>
#include <iconv.h>

#include <cstring>
#include <map>
#include <set>

#include "support/engine.h"
#include "support/hex.h"

namespace sgbk_test {
namespace {

// Empty for what the C library does not convert.
std::string byIconv(const std::string& from, const std::string& to, std::string text) {
  static auto& open = *new std::map<std::string, iconv_t>;  // and never closed
  iconv_t& converter = open[from + ' ' + to];
  if (converter == nullptr) converter = iconv_open(to.c_str(), from.c_str());
  std::string out(4 * text.size(), '\0');
  char *in = text.data(), *end = out.data();
  std::size_t left = text.size(), room = out.size();
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  return iconv(converter, &in, &left, &end, &room) == 0 ? out.substr(0, out.size() - room) : "";
}

std::string encoded(wchar_t c, const char* encoding) {
  return byIconv("WCHAR_T", encoding, {reinterpret_cast<const char*>(&c), sizeof c});
}

// All characters of a source, and what has their shape.
std::string everyCode(const std::string& source) {
  std::string text;
  // ASCII stands for some where the target lacks them, which the library leaves to its callers.
  const std::set<wchar_t> replaced = {0xA9, 0xBC, 0xBD, 0x2122, 0xFEFF};
  for (wchar_t c = 1; c < 0x10000 && (source == "utf-8" || source == "ucs-2le"); ++c) {
    if (!replaced.contains(c)) text += encoded(c, source.c_str());
  }
  if (!text.empty()) return text;
  const bool isHz = source == "hz";
  for (int lead = isHz ? 0x21 : 0x81; lead <= (isHz ? 0x7D : 0xFE); ++lead) {
    for (int trail = isHz ? 0x21 : 0x40; trail <= (isHz ? 0x7E : 0xFE); ++trail) {
      const bool isTrail =
          isHz || (source == "gbk" ? trail != 0x7F : trail <= 0x7E || trail >= 0xA1);
      const std::string pair = {static_cast<char>(lead), static_cast<char>(trail)};
      if (isTrail) text += isHz ? "~{" + pair + "~}" : pair;
    }
  }
  for (char c = 1; c < 0x7F; ++c) text += c == '~' && isHz ? "~~" : std::string(1, c);
  return text;
}

TEST(Characters, ComeOutAsTheLibraryHasThem) {
  const std::map<std::string, std::string> kOperations = {{"big5", "b52sgbk"},
                                                          {"gbk", "t2sgbk"},
                                                          {"utf-8", "utf82sgbk"},
                                                          {"ucs-2le", "uc2sgbk_DB"},
                                                          {"hz", "hz2sgbk"}};
  for (const auto& [source, operation] : kOperations) {
    const std::string text = everyCode(source), expected = byLibrary(operation, text);
    EXPECT_TRUE(widened(textOf(source + " gbk", text)) == expected) << source;
    EXPECT_TRUE(textOf(source + " gbk-wide", text) == expected) << source;
    if (source == "ucs-2le") {
      const std::string swapped = byIconv("UTF-16LE", "UTF-16BE", text);
      EXPECT_TRUE(textOf("ucs-2be gbk-wide", swapped) == expected);
    }
  }
}

// GB18030 gave these other codes in its editions of 2000, 2005 and 2022, and iconv with them.
bool isMoved(wchar_t c) {
  const std::set<wchar_t> kMoved = {0x1E3F, 0x20087, 0x20089, 0x200CC, 0x215D7, 0x2298F, 0x241FE};
  return (c >= 0xE000 && c <= 0xF8FF) || (c >= 0xFE10 && c <= 0xFE19) ||
         (c >= 0x9FB4 && c <= 0x9FBB) || kMoved.contains(c);
}

TEST(Characters, OfUnicodeAreKeptWhereTheTargetHasThem) {
  std::string text;
  for (wchar_t c = 0x80; c < 0x110000; ++c) {
    const std::string character = c != 0xFEFF ? encoded(c, "UTF-8") : "";
    if (!character.empty()) text += character + "\n";
  }
  std::map<std::string, std::string> by;
  for (const std::string target : {"utf-8", "gb18030", "utf-16le"}) {
    const Converted converted = convert("utf-8 " + target, text);
    EXPECT_EQ(described(converted.losses), "") << target;
    by[target] = converted.text;
  }
  EXPECT_TRUE(textOf("ucs-2le utf-8", by["utf-16le"]) == by["utf-8"]);

  const auto given = split(text, '\n'), codes = split(by["gb18030"], '\n'),
             kept = split(by["utf-8"], '\n');
  ASSERT_TRUE(given.size() == codes.size() && given.size() == kept.size());
  std::string fourBytes, theirCharacters;
  for (std::size_t i = 0; i < given.size() && !HasFailure(); ++i) {
    wchar_t c;
    std::memcpy(&c, byIconv("UTF-8", "WCHAR_T", given[i]).data(), sizeof c);
    const std::string mapped = c < 0x10000 ? byLibrary("utf82sgbk", given[i]) : "";
    const std::string theirs = isMoved(c) ? "" : byIconv("UTF-8", "GB18030", given[i]);
    const std::string code = mapped.empty() ? theirs : mapped;
    EXPECT_TRUE(code.empty() || codes[i] == code) << toHex(given[i]) << toHex(codes[i]);
    const std::string character = mapped.empty() ? given[i] : byIconv("GB18030", "UTF-8", mapped);
    EXPECT_TRUE(kept[i] == character || (!mapped.empty() && isMoved(c))) << toHex(given[i]);
    if (theirs.size() == 4) fourBytes += theirs + "\n", theirCharacters += kept[i] + "\n";
  }
  EXPECT_GT(fourBytes.size(), 5000000u);
  EXPECT_TRUE(textOf("gbk utf-8", fourBytes) == theirCharacters);
}

}  // namespace
}  // namespace sgbk_test
