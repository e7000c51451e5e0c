#include "message.h"

#include <cstdio>

namespace cli {

std::string escaped(std::string_view text) {
  std::string result;
  const auto inHex = [&](char c) {
    char digits[5];
    std::snprintf(digits, sizeof digits, "\\x%02X", static_cast<unsigned char>(c));
    result += digits;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    if (c == '\t') {
      result += "\\t";
    } else if (c == '\n') {
      result += "\\n";
    } else if (c == '\\') {
      result += "\\\\";
    } else if ((c >= 0 && c < ' ') || c == '\x7F') {
      inHex(c);
    } else if (c == '\xC2' && next >= 0x80 && next < 0xA0) {
      inHex(c);  // U+0080 to U+009F, which terminals obey, too
      inHex(text[++i]);
    } else {
      result += c;
    }
  }
  return result;
}

void printMessage(std::string_view text) {
  std::fprintf(stderr, "sgbk: %s\n", escaped(text).c_str());
}

}  // namespace cli
