// Characters as Unicode code points: those of GBK and Big5 codes, and how the targets write them.

#ifndef SGBK_TEXT_CODE_POINTS_H
#define SGBK_TEXT_CODE_POINTS_H

#include <cstdint>
#include <string_view>

#include "core/gbk_bytes.h"

// The images that the build makes from the mapping texts: a code point for each code, lead byte +
// 256 * trail byte. All two-byte codes of GB18030 are codes of GBK here.
extern "C" const std::uint32_t sgbk_gbk_code_points[0x10000];
extern "C" const std::uint32_t sgbk_big5_code_points[0x10000];

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

// The code point by which Unicode before 3.1 had to write some characters of row FE, and by which
// the library knows them; kNoCodePoint for all others.
CodePoint privatePointOf(CodePoint c);

Sequence utf8Of(CodePoint c);
Sequence utf16leOf(CodePoint c);
Sequence gb18030Of(CodePoint c);
Sequence big5Of(CodePoint c);

// Of four bytes of the right shape in GB18030; kNoCodePoint when there is no such character.
CodePoint codePointOfGb18030(const Byte* bytes);

// The codes of four bytes by their number. In the text between decoding and encoding that is the
// code point of a character that GBK lacks.
constexpr Sequence fourBytesOf(std::uint32_t rank) {
  return {4,
          {static_cast<char>(0x81 + rank / 12600), static_cast<char>(0x30 + rank / 1260 % 10),
           static_cast<char>(0x81 + rank / 10 % 126), static_cast<char>(0x30 + rank % 10)}};
}
constexpr std::uint32_t rankOf(const Byte* p) {
  return ((p[0] - 0x81u) * 10 + (p[1] - 0x30u)) * 1260 + (p[2] - 0x81u) * 10 + (p[3] - 0x30u);
}
// The second and the fourth byte tell four bytes from two.
constexpr bool isFourBytesDigit(Byte b) { return b >= '0' && b <= '9'; }

}  // namespace sgbk::text

#endif
