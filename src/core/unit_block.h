// Eight 16-bit units at once, code units or double-byte characters, in the compilers' own
// vectors: one instruction for eight units on every 64-bit processor.

#ifndef SGBK_CORE_UNIT_BLOCK_H
#define SGBK_CORE_UNIT_BLOCK_H

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "core/byte_block.h"

namespace sgbk {

using Units = unsigned short __attribute__((vector_size(16)));
inline constexpr int kBlockUnits = 8;

inline Units loadUnits(const void* from) {
  Units units;
  std::memcpy(&units, from, sizeof units);
  return units;
}

inline void storeUnits(char* to, Units units) { std::memcpy(to, &units, sizeof units); }

// The entries at eight indexes.
inline Units lookUpUnits(const gchar_t* table, const unsigned short* indexes) {
  const auto entry = [=](int i) { return table[indexes[i]]; };
#ifdef __SSE2__
  // Each entry goes from memory to its place in one instruction.
  __m128i units = _mm_cvtsi32_si128(entry(0));
  units = _mm_insert_epi16(units, entry(1), 1);
  units = _mm_insert_epi16(units, entry(2), 2);
  units = _mm_insert_epi16(units, entry(3), 3);
  units = _mm_insert_epi16(units, entry(4), 4);
  units = _mm_insert_epi16(units, entry(5), 5);
  units = _mm_insert_epi16(units, entry(6), 6);
  return reinterpret_cast<Units>(_mm_insert_epi16(units, entry(7), 7));
#else
  return Units{entry(0), entry(1), entry(2), entry(3), entry(4), entry(5), entry(6), entry(7)};
#endif
}

inline Units everyUnit(unsigned short unit) {
  return Units{unit, unit, unit, unit, unit, unit, unit, unit};
}

// All bits of every unit that equals `unit`.
inline Units unitsEqualTo(Units units, unsigned short unit) {
  return reinterpret_cast<Units>(units == everyUnit(unit));
}

// All bits of every unit from `first` to `last`.
inline Units unitsWithin(Units units, unsigned short first, unsigned short last) {
  return reinterpret_cast<Units>(units - everyUnit(first) <=
                                 everyUnit(static_cast<unsigned short>(last - first)));
}

// The low bytes of eight units.
inline Block lowBytes(Units units) {
  using Bytes = unsigned char __attribute__((vector_size(8)));
  return reinterpret_cast<Block>(__builtin_convertvector(units, Bytes));
}

// For units with all bits or none set: the same number of bits for each unit.
inline auto bitsOf(Units units) {
#ifdef __SSE2__
  return static_cast<std::uint16_t>(_mm_movemask_epi8(reinterpret_cast<__m128i>(units)));
#else
  return lowBytes(units);
#endif
}

inline bool anyBit(Units units) { return bitsOf(units) != 0; }
inline bool everyBit(Units units) { return bitsOf(units) == decltype(bitsOf(units))(-1); }

}  // namespace sgbk

#endif
