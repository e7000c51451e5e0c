// Sixteen double-byte characters at once, with lead and trail bytes in separate vectors.

#ifndef SGBK_CORE_PAIR_BLOCK_H
#define SGBK_CORE_PAIR_BLOCK_H

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "core/gbk_bytes.h"

namespace sgbk {

using Bytes = unsigned char __attribute__((vector_size(16)));
inline constexpr int kBlockPairs = 16;

inline Bytes loadBytes(const void* from) {
  Bytes bytes;
  std::memcpy(&bytes, from, sizeof bytes);
  return bytes;
}

// The same byte sixteen times.
inline Bytes everyByte(Byte b) { return Bytes{} + b; }

// All bits of every byte from `first` to `last`.
inline Bytes within(Bytes bytes, Byte first, Byte last) {
  return reinterpret_cast<Bytes>(bytes - everyByte(first) <=
                                 everyByte(static_cast<Byte>(last - first)));
}
inline Bytes equalTo(Bytes bytes, Byte b) { return reinterpret_cast<Bytes>(bytes == everyByte(b)); }

// Eight bytes of each from the place `from` on, in turn.
template <int from>
Bytes interleaved(Bytes a, Bytes b) {
  return __builtin_shufflevector(a, b, from, from + 16, from + 1, from + 17, from + 2, from + 18,
                                 from + 3, from + 19, from + 4, from + 20, from + 5, from + 21,
                                 from + 6, from + 22, from + 7, from + 23);
}

struct PairBlock {
  PairBlock(Bytes firstEight, Bytes lastEight)
      : first(firstEight),
        second(lastEight),
        leads(__builtin_shufflevector(first, second, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24,
                                      26, 28, 30)),
        trails(__builtin_shufflevector(first, second, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25,
                                       27, 29, 31)) {}
  explicit PairBlock(const void* from)
      : PairBlock(loadBytes(from), loadBytes(static_cast<const char*>(from) + sizeof(Bytes))) {}

  void store(void* to) const {
    std::memcpy(to, &first, sizeof first);
    std::memcpy(static_cast<char*>(to) + sizeof first, &second, sizeof second);
  }
  Bytes equalToPair(gchar_t pair) const {
    return equalTo(leads, leadOf(pair)) & equalTo(trails, trailOf(pair));
  }

  const Bytes first, second;  // as they stand in memory
  const Bytes leads, trails;
};

// Which of sixteen units are of a kind, with kMaskBits bits for each and the first unit lowest.
// Made from bytes with all bits or none set.
using Mask = std::uint64_t;
#ifdef __SSE2__
inline constexpr int kMaskBits = 1;
inline Mask maskOf(Bytes bytes) {
  return static_cast<Mask>(_mm_movemask_epi8(reinterpret_cast<__m128i>(bytes)));
}
#else
inline constexpr int kMaskBits = 4;
inline Mask maskOf(Bytes bytes) {
  using Units = unsigned short __attribute__((vector_size(16)));
  using Half = unsigned char __attribute__((vector_size(8)));
  return reinterpret_cast<Mask>(__builtin_convertvector(reinterpret_cast<Units>(bytes) >> 4, Half));
}
#endif
inline constexpr Mask kWholeMask = ~Mask{0} >> (64 - kBlockPairs * kMaskBits);

// The units before the first one in `mask`; all of them when it is empty.
constexpr Mask before(Mask mask) { return (mask - 1) & ~mask & kWholeMask; }
// The number of units up to the last one in `mask`. Without std::bit_width, whose jump for 0 no
// processor can predict.
inline int countUpTo(Mask mask) {
  const Mask ones = mask >> (kMaskBits - 1) << 1 | 1;
  return (63 - __builtin_clzll(ones) + kMaskBits - 1) / kMaskBits;
}

}  // namespace sgbk

#endif
