// Character entities of a page, resolved to GBK text.

#ifndef SGBK_EXAMPLES_ENTITIES_H
#define SGBK_EXAMPLES_ENTITIES_H

#include <sgbk/EncodingConvertor.h>

#include <cstdlib>
#include <cstring>
#include <string>

constexpr UINT16 kNoEntity = 0xFFFE;
constexpr gchar_t kNotInGbk = 0x3F3F;

inline std::string gbkBytes(UINT16 code) {
  const gchar_t unit =
      code == kNoEntity ? kNotInGbk : EncodingConvertor::getInstance()->getucgvalue(code);
  if (unit == kNotInGbk) return {};
  return {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
}

// The GBK bytes for the entity after an ampersand; `rest` is moved past it. A name without its
// semicolon is accepted where browsers accept it. What GBK lacks is written in ASCII where that is
// usual ("copy" as "(C)"), and what is not an entity stays as it is.
inline std::string takeEntity(const char*& rest) {
  const char* end = rest;
  std::string bytes;
  if (*rest == '#') {
    const bool hex = rest[1] == 'x' || rest[1] == 'X';
    const char* const digits = rest + (hex ? 2 : 1);
    char* last = nullptr;
    const unsigned long code = std::strtoul(digits, &last, hex ? 16 : 10);
    bytes = last > digits && code <= 0xFFFF ? gbkBytes(static_cast<UINT16>(code)) : "";
    end = last;
  } else {
    while (std::isalnum(static_cast<unsigned char>(*end))) ++end;
    const std::string name(rest, end);
    size_t length = name.size();
    bytes = gbkBytes(*end == ';' ? decodeCharEntity(name.c_str())
                                 : decodeIrregularCharEntity(name.c_str(), length));
    const char* scan = name.c_str();
    char ascii[4];
    if (!bytes.empty()) {
      end = rest + length;
    } else if (deEscHtml(name.c_str(), ascii, scan) > 0) {
      bytes = ascii;
      end = rest + (scan - name.c_str());
    }
  }
  if (bytes.empty()) return "&";
  rest = *end == ';' ? end + 1 : end;
  return bytes;
}

inline std::string withoutEntities(const std::string& text) {
  std::string out;
  for (const char* rest = text.c_str(); *rest != '\0';) {
    const auto byte = static_cast<unsigned char>(*rest++);
    if (byte == '&') {
      out += takeEntity(rest);
      continue;
    }
    out += static_cast<char>(byte);
    if (byte > 0x80 && byte < 0xFF && *rest != '\0') out += *rest++;
  }
  return out;
}

#endif
