// Eight bytes of text at once. Most text consists of runs of ASCII and runs of double-byte
// characters, where one test of eight bytes replaces a test and a jump for each character.

#ifndef SGBK_CORE_BYTE_BLOCK_H
#define SGBK_CORE_BYTE_BLOCK_H

#include <cstdint>
#include <utility>

#include "core/gbk_bytes.h"

namespace sgbk {

// The first byte in the lowest bits.
using Block = std::uint64_t;
inline constexpr int kBlockBytes = 8;

inline Block loadBlock(const Byte* from) { return load<Block>(from); }

constexpr Block inEveryByte(Byte b) { return Block{0x0101010101010101} * b; }
constexpr Block inEveryUnit(gchar_t unit) { return Block{0x0001000100010001} * unit; }

constexpr bool isAllAscii(Block block) { return (block & inEveryByte(0x80)) == 0; }

// True for four pairs that begin with a lead byte. 81..FE keep the top bit when 1 is added and when
// 1 is subtracted; no other byte does both.
constexpr bool isAllPairs(Block block) {
  constexpr Block kOne = inEveryUnit(1);
  constexpr Block kTop = inEveryUnit(0x80);
  const Block leads = block & inEveryUnit(0xFF);
  return ((leads + kOne) & (leads - kOne) & kTop) == kTop;
}

// Calls `each` with 0 to count - 1, as if written out.
template <int count, class Each>
[[gnu::always_inline]] inline void unrolled(Each each) {
  [&]<int... i>(std::integer_sequence<int, i...>) __attribute__((always_inline)) { (each(i), ...); }
  (std::make_integer_sequence<int, count>{});
}

}  // namespace sgbk

#endif
