#include "message.h"

#include <cstdio>

namespace cli {
namespace {

template <class... Values>
std::string formatted(const char* format, Values... values) {
  char text[16];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto before = static_cast<unsigned char>(i == 0 ? 0 : text[i - 1]);
    if (byte == '\t') {
      result += "\\t";
    } else if (byte == '\n') {
      result += "\\n";
    } else if (byte == '\\') {
      result += "\\\\";
    } else if (before == 0xC2 && byte >= 0x80 && byte < 0xA0) {
      // U+0080 to U+009F, which terminals obey, too.
      result.back() = '\\';
      result += "xC2" + formatted("\\x%02X", byte);
    } else if (byte < ' ' || byte == 0x7F) {
      result += formatted("\\x%02X", byte);
    } else {
      result += text[i];
    }
  }
  return result;
}

std::string inHex(std::string_view bytes, const char* between) {
  std::string hex;
  for (const char c : bytes) {
    hex += (hex.empty() ? "" : between) + formatted("%02X", static_cast<unsigned char>(c));
  }
  return hex;
}

std::string codePointName(std::uint32_t c) { return formatted("U+%04X", c); }

void printMessage(std::string_view text) {
  std::fprintf(stderr, "sgbk: %s\n", escaped(text).c_str());
}

}  // namespace cli
