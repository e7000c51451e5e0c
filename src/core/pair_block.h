// Sixteen double-byte characters at once, with lead and trail bytes in separate vectors.

#ifndef SGBK_CORE_PAIR_BLOCK_H
#define SGBK_CORE_PAIR_BLOCK_H

#include "core/vectors.h"

namespace sgbk {

inline constexpr int kBlockPairs = 16;

// Eight bytes of each from the place `from` on, in turn.
template <int from>
Bytes interleaved(Bytes a, Bytes b) {
  return __builtin_shufflevector(a, b, from, from + 16, from + 1, from + 17, from + 2, from + 18,
                                 from + 3, from + 19, from + 4, from + 20, from + 5, from + 21,
                                 from + 6, from + 22, from + 7, from + 23);
}

struct PairBlock {
  PairBlock(Bytes first, Bytes second)
      : leads(__builtin_shufflevector(first, second, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24,
                                      26, 28, 30)),
        trails(__builtin_shufflevector(first, second, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25,
                                       27, 29, 31)) {}
  explicit PairBlock(const void* from)
      : PairBlock(load<Bytes>(from), load<Bytes>(static_cast<const char*>(from) + sizeof(Bytes))) {}

  Bytes equalToPair(gchar_t pair) const {
    return equalTo(leads, leadOf(pair)) & equalTo(trails, trailOf(pair));
  }

  const Bytes leads, trails;
};

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
