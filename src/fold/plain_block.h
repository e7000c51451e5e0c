// Folding several characters at once: ASCII, or ideographs and full-width characters.

#ifndef SGBK_FOLD_PLAIN_BLOCK_H
#define SGBK_FOLD_PLAIN_BLOCK_H

#include <algorithm>

#include "core/byte_block.h"
#include "core/pair_block.h"
#include "fold/fold_step.h"

namespace sgbk {

// The top bit of each byte of `ascii` from `first` to `last`.
constexpr Block bytesWithin(Block ascii, Byte first, Byte last) {
  return (ascii + inEveryByte(static_cast<Byte>(0x80 - first))) &
         ~(ascii + inEveryByte(static_cast<Byte>(0x7F - last))) & inEveryByte(0x80);
}

constexpr Block lowered(Block ascii) { return ascii + (bytesWithin(ascii, 'A', 'Z') >> 2); }

// Whether the full-width markup characters & < > are folded like others or left out.
enum class Markup { folded, leftOut };

// Folds sixteen pairs without a jump, since no processor can predict where text has symbols. Leaves
// out the first pair that is neither an ideograph nor in row A1 or A3, and those after it.
template <Yen yen, Markup markup>
struct FoldedPairs {
  [[gnu::always_inline]] FoldedPairs(const PairBlock& pairs, bool ifcase) {
    const Bytes leads = pairs.leads;
    const Bytes trails = pairs.trails;
    const Bytes isA3 = equalTo(leads, 0xA3);
    Bytes printable = isA3 & within(trails, 0xA1, 0xFD);
    if (yen == Yen::kept) printable &= ~equalTo(trails, 0xA4);
    const Bytes blank =
        pairs.equalToPair(CHINESE_SPACE_CHAR) | pairs.equalToPair(RETURN_CONVERSION_CHAR);
    const Bytes others =
        pairs.equalToPair(unitOf(0xA1, 0xAB)) | pairs.equalToPair(unitOf(0xA1, 0xE7));
    const Bytes symbol = (isA3 | equalTo(leads, 0xA1)) & within(trails, 0xA1, 0xFF) & ~others;
    Bytes plain = symbol | blank | within(leads, 0x81, 0xA0) | within(leads, 0xB0, 0xF7) |
                  (within(leads, 0xAA, 0xFE) & within(trails, 0x00, 0xA0));
    if (markup == Markup::leftOut) {
      plain &= ~(isA3 & (equalTo(trails, 0xA6) | equalTo(trails | Byte{0x02}, 0xBE)));
    }
    const Bytes toSmall = ifcase ? within(trails, 0xC1, 0xDA) & Byte{0x20} : Bytes{};
    const Bytes ascii = ((trails - Byte{0x80} + toSmall) & printable) | (blank & Byte{' '});
    const Bytes folded = printable | blank;
    const Bytes first = ascii | (leads & ~folded);
    const Bytes second = trails & ~folded;
    const Bytes inOrder[] = {interleaved<0>(first, second), interleaved<8>(first, second)};
    std::memcpy(units, inOrder, sizeof units);
    // Where each of them ends: the product adds up the lengths of all before.
    const Bytes lengths = folded + Byte{2};
    Block sums[2];
    std::memcpy(sums, &lengths, sizeof sums);
    sums[0] *= inEveryByte(1);
    sums[1] = sums[1] * inEveryByte(1) + (sums[0] >> 56) * inEveryByte(1);
    std::memcpy(ends + 1, sums, sizeof sums);
    count = countUpTo(before(~maskOf(plain) & kWholeMask));
  }

  gchar_t units[kBlockPairs];       // each an ASCII character or a pair
  Byte ends[kBlockPairs + 1] = {};  // of all before each
  int count;
};

// Takes characters that need no test of each while at least kRoomOfSteps of `left` bytes of input
// and of output are there. Where text changes between ASCII and pairs cannot be predicted, so up to
// seven ASCII characters and sixteen pairs behind them are taken without a jump, and what stands
// behind them in the output is written again as it was.
inline constexpr std::ptrdiff_t kRoomOfSteps = 96;
template <Yen yen, Markup markup, class Write>
[[gnu::always_inline]] inline void takeSteps(const Byte*& psrc, char*& pdest, std::ptrdiff_t left,
                                             bool ifcase, Write write) {
  constexpr Block kLast = Block{0x80} << 56;
  for (const Byte* const srcend = psrc + left; srcend - psrc >= kRoomOfSteps;) {
    const Block block = loadBlock(psrc);
    // A TAB behind a space would merge with it.
    const Block tabs = bytesWithin(loadBlock(psrc + 1) & ~inEveryByte(0x80), '\t', '\t');
    const Block stops = (block & inEveryByte(0x80)) | tabs;
    const Block ascii = ifcase ? lowered(block & ~inEveryByte(0x80)) : block;
    if (stops == 0) {
      std::memcpy(pdest, &ascii, sizeof ascii);
      psrc += kBlockBytes;
      pdest += kBlockBytes;
      continue;
    }
    const int singles = __builtin_ctzll(stops | kLast) / 8;
    const FoldedPairs<yen, markup> pairs(PairBlock(psrc + singles), ifcase);
    char* const middle = pdest + singles;
    char* const end = middle + pairs.ends[pairs.count];
    const Bytes kept[] = {load<Bytes>(end), load<Bytes>(end + 16), load<Bytes>(end + 32)};
    std::memcpy(pdest, &ascii, sizeof ascii);
    unrolled<kBlockPairs>([&](int i) { storeUnit(middle + pairs.ends[i], write(pairs.units[i])); });
    std::memcpy(end, kept, sizeof kept);
    if (end == pdest) break;
    pdest = end;
    // Text without ASCII goes on without waiting for what was counted; where each pair is looked
    // up, the look-ups fill the wait.
    if (yen == Yen::kept && singles == 0 && pairs.count == kBlockPairs) {
      psrc += 2 * kBlockPairs;
    } else {
      psrc += singles + 2 * pairs.count;
    }
  }
}

// Takes characters of `in` that need no test of each: ASCII, and pairs as above. False when there
// are none.
template <Yen yen, Markup markup, class Input, class Write>
[[gnu::always_inline]] inline bool takePlainRun(Input& in, FoldedOutput& out, std::ptrdiff_t room,
                                                bool ifcase, Write write) {
  const Byte* psrc = in.psrc;
  char* pdest = out.pdest;
  const std::ptrdiff_t reach = in.reach();
  if (const auto left = std::min(room, reach); left >= kRoomOfSteps) {
    takeSteps<yen, markup>(psrc, pdest, left, ifcase, write);
  } else if (isAscii(*psrc)) {
    // One byte less, since a TAB behind a space would merge with it.
    for (auto last = std::min(room, reach - 1); last > 0 && isAscii(*psrc); --last) {
      if (psrc[1] == '\t' && psrc[0] == ' ') break;
      *pdest++ = static_cast<char>(ifcase ? loweredAscii(*psrc) : *psrc);
      ++psrc;
    }
  } else if (reach >= kBlockPairs && room >= kBlockPairs + 2) {
    const bool whole = reach >= 2 * kBlockPairs && room >= 2 * kBlockPairs + 2;
    const FoldedPairs<yen, markup> pairs(
        {load<Bytes>(psrc), whole ? load<Bytes>(psrc + sizeof(Bytes)) : Bytes{}}, ifcase);
    char* const end = pdest + pairs.ends[pairs.count];
    const char kept = *end;  // an ASCII character is written with a NUL behind it
    for (int i = 0; i < pairs.count; ++i) storeUnit(pdest + pairs.ends[i], write(pairs.units[i]));
    *end = kept;
    pdest = end;
    psrc += 2 * pairs.count;
  }
  out.pdest = pdest;
  return psrc != std::exchange(in.psrc, psrc);
}

}  // namespace sgbk

#endif
