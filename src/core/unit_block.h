// Eight 16-bit units at once, be they code units or double-byte characters, by SSE2, which every
// x86-64 has.

#ifndef SGBK_CORE_UNIT_BLOCK_H
#define SGBK_CORE_UNIT_BLOCK_H

#include <emmintrin.h>

#include "core/gbk_bytes.h"

namespace sgbk {

using Units = __m128i;
inline constexpr int kBlockUnits = 8;

inline Units loadUnits(const void* from) {
  return _mm_loadu_si128(static_cast<const Units*>(from));
}

inline void storeUnits(char* to, Units units) {
  _mm_storeu_si128(reinterpret_cast<Units*>(to), units);
}

// The entries at eight indexes.
inline Units lookUpUnits(const gchar_t* table, const unsigned short* indexes) {
  const auto entry = [=](int i) { return table[indexes[i]]; };
  Units units = _mm_cvtsi32_si128(entry(0));
  units = _mm_insert_epi16(units, entry(1), 1);
  units = _mm_insert_epi16(units, entry(2), 2);
  units = _mm_insert_epi16(units, entry(3), 3);
  units = _mm_insert_epi16(units, entry(4), 4);
  units = _mm_insert_epi16(units, entry(5), 5);
  units = _mm_insert_epi16(units, entry(6), 6);
  return _mm_insert_epi16(units, entry(7), 7);
}

inline Units everyUnit(unsigned short unit) { return _mm_set1_epi16(static_cast<short>(unit)); }

// All bits of every unit that equals `unit`.
inline Units unitsEqualTo(Units units, unsigned short unit) {
  return _mm_cmpeq_epi16(units, everyUnit(unit));
}

// All bits of every unit from `first` to `last`, which are below 8000.
inline Units unitsWithin(Units units, unsigned short first, unsigned short last) {
  return _mm_and_si128(_mm_cmpgt_epi16(units, everyUnit(static_cast<unsigned short>(first - 1))),
                       _mm_cmpgt_epi16(everyUnit(static_cast<unsigned short>(last + 1)), units));
}

// All bits of every unit that is an ASCII character.
inline Units asciiUnits(Units units) {
  return _mm_cmpeq_epi16(_mm_subs_epu16(units, _mm_set1_epi16(0x7F)), _mm_setzero_si128());
}

inline bool anyBit(Units units) { return _mm_movemask_epi8(units) != 0; }
inline bool everyBit(Units units) { return _mm_movemask_epi8(units) == 0xFFFF; }

// The low bytes of eight ASCII characters.
inline void storeLowBytes(char* to, Units units) {
  _mm_storel_epi64(reinterpret_cast<Units*>(to), _mm_packus_epi16(units, units));
}

}  // namespace sgbk

#endif
