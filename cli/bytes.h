// Bytes of text, and the fast way over a run of ASCII.

#ifndef SGBK_CLI_BYTES_H
#define SGBK_CLI_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "sgbk/support.h"

namespace cli {

using Byte = unsigned char;

inline const Byte* bytesOf(std::string_view text) {
  return reinterpret_cast<const Byte*>(text.data());
}
inline const char* charsOf(const Byte* p) { return reinterpret_cast<const char*>(p); }
inline std::string_view viewOf(const Byte* begin, const Byte* end) {
  return {charsOf(begin), static_cast<std::size_t>(end - begin)};
}

inline bool isLineEnd(Byte b) { return b == '\n' || b == '\r'; }
inline bool isAscii(Byte b) { return b < 0x80; }
inline bool isLead(Byte b) { return b > 0x80 && b < 0xFF; }
inline bool isTrail(Byte b) { return b >= 0x40 && b != 0x7F && b != 0xFF; }

inline gchar_t unitAt(const void* p) {
  gchar_t unit;
  std::memcpy(&unit, p, sizeof unit);
  return unit;
}
inline gchar_t unitOf(Byte lead, Byte trail) { return static_cast<gchar_t>(lead | trail << 8); }
inline Byte leadOf(gchar_t unit) { return static_cast<Byte>(unit & 0xFF); }
inline Byte trailOf(gchar_t unit) { return static_cast<Byte>(unit >> 8); }

// A code that may stand in GBK text: of the right shape and not of the user-defined area.
inline bool isGbkCharacter(gchar_t unit) {
  return isLead(leadOf(unit)) && isTrail(trailOf(unit)) && !isGBKUndefinedChar(unit);
}

// The first byte of 80 and more, or the end.
inline const Byte* skipAscii(const Byte* p, const Byte* end) {
  for (; end - p >= 8; p += 8) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    if ((word & 0x8080808080808080U) != 0) break;
  }
  while (p != end && isAscii(*p)) ++p;
  return p;
}

// The end of a run of double-byte characters, in GBK text that holds only whole ones.
inline const Byte* skipPairs(const Byte* p, const Byte* end) {
  while (p != end && !isAscii(*p)) p += 2;
  return p;
}

}  // namespace cli

#endif
