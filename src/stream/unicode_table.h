// What the conversions from Unicode drop.

#ifndef SGBK_STREAM_UNICODE_TABLE_H
#define SGBK_STREAM_UNICODE_TABLE_H

#include "core/vectors.h"
#include "sgbk/EncodingConvertor.h"

namespace sgbk {

// The table entry of a code point without a GBK form.
inline constexpr gchar_t kUnmapped = 0x3F3F;
inline constexpr unsigned short kByteOrderMark = 0xFEFF;

inline bool isWritten(unsigned short codePoint, gchar_t entry) {
  return entry != kUnmapped && codePoint != kByteOrderMark;
}

inline bool areAllWritten(Units codePoints, Units entries) {
  return !anyBit(equalTo(codePoints, kByteOrderMark) | equalTo(entries, kUnmapped));
}

// The entries of eight code points.
inline Units lookUpUnits(const gchar_t* table, const unsigned short* codePoints) {
  Units entries{};
  unrolled<kBlockUnits>([&](int i) { entries[i] = table[codePoints[i]]; });
  return entries;
}

}  // namespace sgbk

#endif
