// Converting a character between bytes and gchar_t. Bytes may be at any address.

#ifndef SGBK_CORE_GBK_BYTES_H
#define SGBK_CORE_GBK_BYTES_H

#include <bit>
#include <cstdint>
#include <cstring>

#include "sgbk/support.h"

namespace sgbk {

// The tables are read through 16-bit views, which hold lead + 256 * trail only here.
static_assert(std::endian::native == std::endian::little, "sgbk needs a little-endian host");

using Byte = unsigned char;

inline constexpr gchar_t unitOf(Byte lead, Byte trail) {
  return static_cast<gchar_t>(lead | trail << 8);
}

template <class Value>
Value load(const void* from) {
  Value value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

inline gchar_t loadUnit(const Byte* from) { return load<gchar_t>(from); }
inline void storeUnit(char* to, gchar_t unit) { std::memcpy(to, &unit, sizeof unit); }

inline constexpr Byte leadOf(gchar_t unit) { return static_cast<Byte>(unit & 0xFF); }
inline constexpr Byte trailOf(gchar_t unit) { return static_cast<Byte>(unit >> 8); }

// A byte that starts a double-byte character in Big5 and GBK text: 81..FE.
inline constexpr bool isLeadByte(Byte b) { return static_cast<Byte>(b - 0x81) <= 0xFE - 0x81; }
inline constexpr bool isAscii(Byte b) { return b < 0x80; }

// Characters that are neither blank nor symbol nor letter, and single bytes. Text mixes the ranges,
// so one test with one jump covers them, in a mask with a bit for each eight lead bytes.
inline constexpr bool isSingleOrIdeograph(gchar_t unit) {
  constexpr std::uint32_t kEights = 0x7FCFFFFF;  // 00..9F and B0..F7
  return (kEights >> ((unit & 0xFF) >> 3) & 1) != 0;
}

inline const Byte* bytesOf(const char* text) { return reinterpret_cast<const Byte*>(text); }

}  // namespace sgbk

#endif
