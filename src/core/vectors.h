// Sixteen bytes or eight 16-bit units at once, in the compilers' own vectors: one instruction for
// all of them on every 64-bit processor.

#ifndef SGBK_CORE_VECTORS_H
#define SGBK_CORE_VECTORS_H

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <type_traits>

#include "core/byte_block.h"

namespace sgbk {

using Bytes = Byte __attribute__((vector_size(16)));
using Units = gchar_t __attribute__((vector_size(16)));
inline constexpr int kBlockUnits = 8;

template <class Vector>
using ElementOf = std::remove_cvref_t<decltype(Vector{}[0])>;

// All bits of every element that equals `value`.
template <class Vector>
Vector equalTo(Vector vector, ElementOf<Vector> value) {
  return reinterpret_cast<Vector>(vector == value);
}

// All bits of every element from `first` to `last`.
template <class Vector>
Vector within(Vector vector, ElementOf<Vector> first, ElementOf<Vector> last) {
  return reinterpret_cast<Vector>(vector - first <= static_cast<ElementOf<Vector>>(last - first));
}

// The low bytes of eight units.
inline Block lowBytes(Units units) {
  using Half = Byte __attribute__((vector_size(8)));
  return reinterpret_cast<Block>(__builtin_convertvector(units, Half));
}

// Which of sixteen bytes, of which each has all bits or none, have them: kMaskBits bits for each,
// the first byte lowest.
using Mask = std::uint64_t;
#ifdef __SSE2__
inline constexpr int kMaskBits = 1;
inline Mask maskOf(Bytes bytes) {
  return static_cast<Mask>(_mm_movemask_epi8(reinterpret_cast<__m128i>(bytes)));
}
#else
inline constexpr int kMaskBits = 4;
inline Mask maskOf(Bytes bytes) { return lowBytes(reinterpret_cast<Units>(bytes) >> 4); }
#endif
inline constexpr Mask kWholeMask = ~Mask{0} >> (64 - sizeof(Bytes) * kMaskBits);

template <class Vector>
bool anyBit(Vector vector) {
  return maskOf(reinterpret_cast<Bytes>(vector)) != 0;
}
template <class Vector>
bool everyBit(Vector vector) {
  return maskOf(reinterpret_cast<Bytes>(vector)) == kWholeMask;
}

}  // namespace sgbk

#endif
