// Characters as Unicode code points: those of GBK and Big5 codes, and how the targets write them.

#ifndef SGBK_TEXT_CODE_POINTS_H
#define SGBK_TEXT_CODE_POINTS_H

#include <cstdint>
#include <string_view>

#include "core/gbk_bytes.h"

namespace sgbk::text {

using CodePoint = std::uint32_t;

inline constexpr CodePoint kNoCodePoint = 0;
inline constexpr CodePoint kByteOrderMark = 0xFEFF;

constexpr bool isPrivateUse(CodePoint c) { return c >= 0xE000 && c <= 0xF8FF; }
constexpr bool isSurrogate(CodePoint c) { return (c & 0xFFFFF800) == 0xD800; }

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 0x20) : c; }

// One to four bytes; none for a character that the encoding lacks.
struct Sequence {
  unsigned char size = 0;
  char bytes[4] = {};

  std::string_view view() const { return {bytes, size}; }
};

// kNoCodePoint for what is no code. All two-byte codes of GB18030 are codes of GBK here.
CodePoint codePointOfGbk(gchar_t code);
CodePoint codePointOfBig5(gchar_t code);

// The code point by which Unicode before 3.1 had to write some characters of row FE, and by which
// the library knows them; kNoCodePoint for all others.
CodePoint privatePointOf(CodePoint c);

Sequence utf8Of(CodePoint c);
Sequence utf16leOf(CodePoint c);
Sequence gb18030Of(CodePoint c);
Sequence big5Of(CodePoint c);

// Of four bytes of the right shape in GB18030; kNoCodePoint when there is no such character.
CodePoint codePointOfGb18030(const Byte* bytes);

// What is not in GBK, in the text between decoding and encoding: four bytes of the shape that
// GB18030 has, numbered by code point.
Sequence fourBytesOf(CodePoint c);
CodePoint codePointOfFourBytes(const Byte* bytes);

// The second and the fourth byte tell four bytes from two.
constexpr bool isFourBytesDigit(Byte b) { return b >= '0' && b <= '9'; }

}  // namespace sgbk::text

#endif
