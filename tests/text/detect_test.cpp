// Finding the encoding: by the bytes alone, and by which of them.

#include <gtest/gtest.h>

#include <algorithm>

#include "support/engine.h"
#include "support/hex.h"

namespace sgbk_test {
namespace {

// The number of bytes after which the source is known.
std::size_t decidedAfter(const std::string& text, std::size_t piece) {
  const Handle c = open("auto utf-8");
  for (std::size_t at = 0; at < text.size(); at += piece) {
    const std::string part = text.substr(at, piece);
    const char* out;
    std::size_t size;
    if (sgbk_convert(c.get(), part.data(), part.size(), 0, &out, &size) != SGBK_OK) return at + part.size();
    if (sgbk_source(c.get()) != std::string("auto")) return at + part.size();
  }
  return text.size() + 1;
}

TEST(Auto, DecidesAtTheSameByteForAnyCutting) {
  std::mt19937 random(6);
  for (int i = 0; i < 1500; ++i) {
    std::string text;
    const char* const kSources[] = {"auto", "big5", "gbk", "utf-8", "hz", "ucs-2le", "auto"};
    for (int k = 0; k < 3; ++k) text += randomText(kSources[random() % 7], 6, random);
    const std::size_t first = decidedAfter(text, 1);
    for (const std::size_t piece : {std::size_t{2}, std::size_t{7}, text.size() + 1}) {
      const std::size_t inPieces = std::min((first + piece - 1) / piece * piece, text.size());
      EXPECT_EQ(decidedAfter(text, piece), first > text.size() ? first : inPieces) << toHex(text);
    }
  }
}

TEST(Auto, WritesAsciiAtOnce) {
  const std::string text = "<html>\r\n<body>text ~ text ~~ \x7F ~{ \n" + std::string(300000, 'x') + "~";
  const Handle c = open("auto utf-8");
  std::size_t written = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char* out;
    std::size_t size;
    ASSERT_EQ(sgbk_convert(c.get(), &text[at], 1, 0, &out, &size), SGBK_OK);
    written += size;
    const bool mayOpen = text[at] == '~' && (at == 0 || text[at - 1] != '~');
    const std::size_t waits = std::min(text.find("~{"), at + !mayOpen);
    const bool isInLine = at >= waits && at < text.find('\n', waits);
    if (at < 16) continue;
    ASSERT_EQ(written, isInLine ? waits : at + !mayOpen) << at;
  }
}

TEST(Auto, TellingCases) {
  using namespace std::string_literals;
  const auto times = [](int n, const std::string& part) {
    std::string text;
    while (n-- > 0) text += part;
    return text;
  };
  const std::string both = "\xB0\xA1\xB0\xA1\xB0\xA1";
  const struct {
    std::string text;
    const char* source;
  } kRows[] = {
      {"", "utf-8"},
      {"plain\n", "utf-8"},
      {"\xEF\xBB\xBF\xFF\n", "utf-8"},
      {"\xFF\xFE\x2D\x4E", "ucs-2le"},
      {"\xFE\xFF\x4E\x2D", "ucs-2be"},
      {"\xFF\xFE\0\0a\0\0\0"s, nullptr},
      {"\x84\x31\x95\x33\xFF", "gbk"},
      {"2\0.\0 \0<\0b\0>\0\n\0"s, "ucs-2le"},
      {"\0002\0.\0 \0<\0b\0>\0\n"s, "ucs-2be"},
      {"\n\0<\0b\0>\0h\0i\0\n\0"s, "ucs-2le"},
      {"a ~{VPND~}\n", "hz"},
      {"~{VPND~}~\n", "hz"},
      {"a ~{VP~ ~}\n", "utf-8"},
      {"cd ~{root,user}\n", "utf-8"},
      {"Fig.~{abcd~}\n", "utf-8"},
      {"Fig.~{\\bf a}~{ab~}\n", "utf-8"},
      {"sed s~{~}~ ~/.x ~~{VPND~}\n", "utf-8"},
      {"ls ~user/~~ ~} ~{home~}\n", "utf-8"},
      // Valid UTF-8 comes before a declaration, and that before counts; a wrong one does not count.
      {"<meta charset=big5>\xE4\xB8\xAD\xE6\x96\x87\xE5\xAD\x97\xE4\xB8\xAD\n", "utf-8"},
      {"<meta charset=big5>" + both + "\n", "big5"},
      {"<meta charset=gb2312>" + both + "\n", "gbk"},
      {"<meta charset=big5>" + times(98, both) + "\x80\x80\n", "gbk"},
      {"<meta charset=big5>" + times(20, both) + times(10, "\x80\xA1") + "\n", nullptr},
      // A line decides before it is known whether it is the last one.
      {"\xC2\xA9<meta charset=big5>\n", "big5"},
      // Half a line: 設定檔與目錄, 设置文件与目录.
      {"\xB3\x5D\xA9\x77\xC0\xC9\xBB\x50\xA5\xD8\xBF\xFD", "big5"},
      {"\xD4\x4F\xB6\xA8\x99\x6E\xC5\x63\xC4\xBF\xE4\x9B", "gbk"},
      {"\xC9\xE8\xD6\xC3\xCE\xC4\xBC\xFE\xD3\xEB\xC4\xBF\xC2\xBC", "gbk"},
      {"\xB8\xF1\xCA\xBD", nullptr},
      // Two bytes of UTF-8 that are GBK: 同 and 頁碼, but the accents of résumé.
      {times(12, "\xCD\xAC"), nullptr},
      {"\xED\x93\xB4\x61", nullptr},
      {times(6, "\xC3\xA9 ") + "\xC5\x93\n", nullptr},
      {"r\xC3\xA9sum\xC3\xA9\n", "utf-8"},
      // Damaged UTF-8.
      {times(20, "\xE4\xB8\xAD") + "\x80", "utf-8"},
      {times(20, "\xC3\xA9 ") + "\x80\n", "utf-8"},
      // Trail bytes that are all of GB 2312: not in Big5.
      {times(16, "\xB0\xA1"), "gbk"},
      {times(15, "\xB0\xA1"), nullptr},
      // Not an encoding of Chinese.
      {"d\xE9j\xE0 vu, \xE0 la carte, na\xEFve\n", nullptr},
      {times(20, "\x83\x81\x83\x62\x83\x5A\x81\x5B\x83\x57"), nullptr},
      {times(40, "\xA4\x40\xA4\x7E") + times(20, "\xC6\xA1"), "big5"},
      // Too late.
      {"\xB0\xA1" + std::string(1 << 18, 'x') + "\n" + times(16, both), nullptr},
      {"\xC3\xA9" + std::string((1 << 18) - 3, 'x') + "\xC3\xA9", "utf-8"},
  };
  for (const auto& row : kRows) {
    const std::string head = toHex(row.text.substr(0, 40));
    const char* const found = sgbk_detect(row.text.data(), row.text.size(), 1);
    EXPECT_STREQ(found, row.source) << head;
    const Converted converted = convert("auto utf-8", row.text, {1 << 17, 1 << 17, 1});
    EXPECT_EQ(converted.result, row.source == nullptr ? SGBK_UNKNOWN_SOURCE : SGBK_OK) << head;
    EXPECT_EQ(converted.source, row.source == nullptr ? "auto" : row.source) << head;
  }
  // Once decided, a malformed byte is a loss.
  EXPECT_EQ(described(convert("auto gbk", times(8, both) + "\n\xFF\n").losses), "2:49:FF :0:malformed ");
}

}  // namespace
}  // namespace sgbk_test
