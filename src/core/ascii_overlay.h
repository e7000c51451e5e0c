// What an ASCII byte becomes in double-byte GBK.

#ifndef SGBK_CORE_ASCII_OVERLAY_H
#define SGBK_CORE_ASCII_OVERLAY_H

#include <array>

#include "core/gbk_bytes.h"
#include "sgbk/EncodingConvertor.h"

namespace sgbk {

using AsciiRow = std::array<gchar_t, 128>;

constexpr gchar_t widenedAscii(Byte c) {
  if (c == 0x00) return 0;
  if (c == 0x01) return unitOf(0x01, ' ');
  if (c == '\n' || c == '\r') return RETURN_CONVERSION_CHAR;
  // In row A3, the places of these two hold the yen sign and the macron.
  if (c == '$') return unitOf(0xA1, 0xE7);
  if (c == LAST_DBC) return unitOf(0xA1, 0xAB);
  if (FIRST_DBC <= c && c < LAST_DBC) return unitOf(0xA3, static_cast<Byte>(c + 0x80));
  return CHINESE_SPACE_CHAR;
}

template <class Entry>
constexpr AsciiRow asciiRow(Entry entry) {
  AsciiRow row{};
  for (Byte c = 0; c < row.size(); ++c) row[c] = entry(c);
  return row;
}

inline constexpr AsciiRow kAsciiOverlay = asciiRow(widenedAscii);

}  // namespace sgbk

#endif
