// Every character of every source, against the library's own operations, the C library's iconv, and
// what must hold of all of them.

#include <gtest/gtest.h>
#include <iconv.h>

#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "support/engine.h"
#include "support/hex.h"
#include "support/operations.h"

namespace sgbk_test {
namespace {

std::string byLibrary(const std::string& operation, const std::string& text) {
  EncodingConvertor::initializeInstance(nullptr);
  const int room = operationNamed(operation).enough(text.size());
  std::string units(static_cast<std::size_t>(room), '\0');
  const long size = operationNamed(operation).call(text.data(), static_cast<int>(text.size()), units.data(), room);
  return units.substr(0, static_cast<std::size_t>(size));
}

std::string utf8(unsigned c) {
  const auto part = [](unsigned b) { return static_cast<char>(b); };
  if (c < 0x80) return {part(c)};
  if (c < 0x800) return {part(0xC0 | c >> 6), part(0x80 | (c & 63))};
  if (c < 0x10000) return {part(0xE0 | c >> 12), part(0x80 | (c >> 6 & 63)), part(0x80 | (c & 63))};
  return {part(0xF0 | c >> 18), part(0x80 | (c >> 12 & 63)), part(0x80 | (c >> 6 & 63)), part(0x80 | (c & 63))};
}

bool isCharacter(unsigned c) { return (c < 0xD800 || c > 0xDFFF) && c != 0xFEFF; }

// Empty for what the C library does not convert.
std::string byIconv(const char* from, const char* to, std::string text) {
  static std::map<std::string, iconv_t> open;
  iconv_t& converter = open[std::string(from) + to];
  if (converter == nullptr) converter = iconv_open(to, from);
  char out[16];
  char* in = text.data();
  char* end = out;
  std::size_t left = text.size(), room = sizeof out;
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  return iconv(converter, &in, &left, &end, &room) == 0 ? std::string(out, end) : "";
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  for (std::size_t at = 0, end; at < text.size(); at = end + 1) {
    end = std::min(text.find('\n', at), text.size());
    result.push_back(text.substr(at, end - at));
  }
  return result;
}

// All characters of a source, and what has their shape.
std::string everyCode(const std::string& source) {
  std::string text;
  if (source == "utf-8" || source.starts_with("ucs-2")) {
    for (unsigned c = 1; c < 0x10000; ++c) {
      // ASCII stands for these where the target lacks them, which the library leaves to its callers.
      const bool isReplaced = c == 0xA9 || c == 0xBC || c == 0xBD || c == 0x2122;
      if (!isCharacter(c) || isReplaced) continue;
      text += source == "utf-8"     ? utf8(c)
              : source == "ucs-2le" ? std::string{static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)}
                                    : std::string{static_cast<char>(c >> 8), static_cast<char>(c & 0xFF)};
    }
    return text;
  }
  const bool isHz = source == "hz";
  for (int lead = isHz ? 0x21 : 0x81; lead <= (isHz ? 0x7D : 0xFE); ++lead) {
    for (int trail = isHz ? 0x21 : 0x40; trail <= (isHz ? 0x7E : 0xFE); ++trail) {
      const bool isTrail = isHz || (source == "gbk" ? trail != 0x7F : trail <= 0x7E || trail >= 0xA1);
      const std::string pair = {static_cast<char>(lead), static_cast<char>(trail)};
      if (isTrail) text += isHz ? "~{" + pair + "~}" : pair;
    }
  }
  for (char c = 1; c < 0x7F; ++c) text += c == '~' && isHz ? "~~" : std::string(1, c);
  return text;
}

const std::map<std::string, std::string> kOperations = {
    {"big5", "b52sgbk"}, {"gbk", "t2sgbk"}, {"utf-8", "utf82sgbk"}, {"ucs-2le", "uc2sgbk_DB"}, {"hz", "hz2sgbk"}};

TEST(Characters, ComeOutAsTheLibraryHasThem) {
  for (const auto& [source, operation] : kOperations) {
    const std::string text = everyCode(source);
    EXPECT_TRUE(widened(textOf(source + " gbk", text)) == byLibrary(operation, text)) << source;
    EXPECT_TRUE(textOf(source + " gbk-wide", text) == byLibrary(operation, text)) << source;
  }
  EXPECT_TRUE(textOf("ucs-2be gbk", everyCode("ucs-2be")) == textOf("ucs-2le gbk", everyCode("ucs-2le")));
}
TEST(Characters, OfRealTextComeOutAsTheLibraryHasThem) {
  std::ifstream file(SGBK_FOLDER "/examples/page.big5.html", std::ios::binary);
  const std::string page(std::istreambuf_iterator<char>(file), {});
  ASSERT_GT(page.size(), 2000u);
  std::map<std::string, std::string> pages = {{"big5", page}};
  for (std::size_t i = 0, size; i < page.size(); i += size) {
    size = page[i] < 0 ? 2 : 1;
    const std::string c = page.substr(i, size);
    pages["utf-8"] += byIconv("CP950", "UTF-8", c);
    pages["ucs-2le"] += byIconv("CP950", "UTF-16LE", c);
    pages["gbk"] += byIconv("CP950", "GBK", c);
  }
  for (const auto& [source, text] : pages) {
    EXPECT_GT(text.size(), page.size() / 2);
    EXPECT_TRUE(widened(textOf(source + " gbk", text)) == byLibrary(kOperations.at(source), text)) << source;
    EXPECT_TRUE(convert(source + " gbk", text).losses.empty());
  }
}

// GB18030 gave these other codes in its editions of 2000, 2005 and 2022, and iconv with them.
bool isMoved(unsigned c) {
  const std::set<unsigned> kMoved = {0x1E3F, 0x20087, 0x20089, 0x200CC, 0x215D7, 0x2298F, 0x241FE};
  return (c >= 0xE000 && c <= 0xF8FF) || (c >= 0xFE10 && c <= 0xFE19) || (c >= 0x9FB4 && c <= 0x9FBB) ||
         kMoved.contains(c);
}

TEST(Characters, OfUnicodeAreKeptWhereTheTargetHasThem) {
  std::vector<unsigned> codePoints;
  std::string text;
  for (unsigned c = 0x80; c < 0x110000; ++c) {
    if (!isCharacter(c)) continue;
    codePoints.push_back(c);
    text += utf8(c) + "\n";
  }
  std::map<std::string, std::vector<std::string>> by;
  for (const char* const target : {"utf-8", "gb18030", "utf-16le"}) {
    const Converted converted = convert(std::string("utf-8 ") + target, text);
    EXPECT_EQ(described(converted.losses), "") << target;
    by[target] = lines(target == std::string("utf-16le") ? textOf("ucs-2le utf-8", converted.text) : converted.text);
    ASSERT_EQ(by[target].size(), codePoints.size());
  }
  EXPECT_TRUE(by["utf-16le"] == by["utf-8"]);
  std::string fourBytes, theirCharacters;
  for (std::size_t i = 0; i < codePoints.size(); ++i) {
    const unsigned c = codePoints[i];
    const std::string mapped = c < 0x10000 ? byLibrary("utf82sgbk", utf8(c)) : "";
    const std::string code = mapped.empty() && !isMoved(c) ? byIconv("UTF-8", "GB18030", utf8(c)) : mapped;
    EXPECT_EQ(toHex(by["gb18030"][i]), toHex(code.empty() ? by["gb18030"][i] : code)) << std::hex << c;
    const std::string character = mapped.empty() ? utf8(c) : byIconv("GB18030", "UTF-8", mapped);
    EXPECT_TRUE(by["utf-8"][i] == character || (!mapped.empty() && isMoved(c))) << std::hex << c << ' ' << toHex(by["utf-8"][i]) << toHex(character);
    const std::string theirs = isMoved(c) ? "" : byIconv("UTF-8", "GB18030", utf8(c));
    if (theirs.size() == 4) fourBytes += theirs + "\n", theirCharacters += by["utf-8"][i] + "\n";
    if (HasFailure()) return;
  }
  EXPECT_GT(fourBytes.size(), 5000000u);
  EXPECT_TRUE(textOf("gbk utf-8", fourBytes) == theirCharacters);
}

}  // namespace
}  // namespace sgbk_test
