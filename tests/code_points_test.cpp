// Every code point as well-formed UTF-8, by itself and in runs, against the Unicode table.

#include <gtest/gtest.h>

#include "support/twins.h"

namespace {

std::string utf8(unsigned c) {
  const auto tail = [c](unsigned shift) { return static_cast<char>(0x80 | (c >> shift & 0x3F)); };
  if (c < 0x80) return {static_cast<char>(c)};
  if (c < 0x800) return {static_cast<char>(0xC0 | c >> 6), tail(0)};
  if (c < 0x10000) return {static_cast<char>(0xE0 | c >> 12), tail(6), tail(0)};
  return {static_cast<char>(0xF0 | c >> 18), tail(12), tail(6), tail(0)};
}

// Of four bytes the first three are read as a group of their own. The last one is dropped where no
// ASCII went before.
std::string expected(unsigned c) {
  const unsigned index = c < 0x10000 ? c : c >> 6 & 0xFFFF;
  const gchar_t entry = sgbk_test::unicodeTable()[index];
  if (c >= 0x80 && (entry == 0x3F3F || index == 0xFEFF)) return {};
  return {static_cast<char>(entry & 0xFF), static_cast<char>(entry >> 8)};
}

std::string converted(const std::string& text) {
  std::string dest(2 * text.size(), '\x5A');
  dest.resize(static_cast<std::size_t>(EncodingConvertor::getInstance()->utf82sgbk(
      text.data(), static_cast<int>(text.size()), dest.data(), static_cast<int>(dest.size()))));
  return dest;
}

TEST(CodePoints, AllHaveTheirTableEntry) {
  ASSERT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  std::string run;
  std::string expectedOfRun;
  for (unsigned c = 0; c <= 0x10FFFF; ++c) {
    if (c == 0xD800) c = 0xE000;
    ASSERT_EQ(converted(utf8(c)), expected(c)) << std::hex << c;
    run += utf8(c);
    expectedOfRun += expected(c);
    if (c % 97 != 96) continue;
    ASSERT_EQ(converted(run), expectedOfRun) << "up to " << std::hex << c;
    run.clear();
    expectedOfRun.clear();
  }
}

}  // namespace
