// Folding several characters at once: ASCII, or ideographs and full-width characters.

#ifndef SGBK_FOLD_PLAIN_BLOCK_H
#define SGBK_FOLD_PLAIN_BLOCK_H

#include <algorithm>
#include <bit>

#include "core/byte_block.h"
#include "core/unit_block.h"
#include "fold/fold_step.h"

namespace sgbk {

// The top bit of each byte of `ascii` from `first` to `last`.
constexpr Block bytesWithin(Block ascii, Byte first, Byte last) {
  return (ascii + inEveryByte(static_cast<Byte>(0x80 - first))) &
         ~(ascii + inEveryByte(static_cast<Byte>(0x7F - last))) & inEveryByte(0x80);
}

constexpr Block lowered(Block ascii) { return ascii + (bytesWithin(ascii, 'A', 'Z') >> 2); }

// Folds eight pairs without a jump, since no processor can predict where text has symbols. Leaves
// out the first pair that is neither an ideograph nor in row A1 or A3, and those after it.
class FoldedPairs {
 public:
  FoldedPairs(Units pairs, bool ifcase) {
    const Units leads = pairs & everyUnit(0xFF);
    const Units trails = pairs >> 8;
    const Units isA3 = unitsEqualTo(leads, 0xA3);
    const Units printable = isA3 & unitsWithin(trails, 0xA1, 0xFD) & ~unitsEqualTo(trails, 0xA4);
    const Units blank =
        unitsEqualTo(pairs, CHINESE_SPACE_CHAR) | unitsEqualTo(pairs, RETURN_CONVERSION_CHAR);
    const Units other =
        unitsEqualTo(pairs, unitOf(0xA1, 0xAB)) | unitsEqualTo(pairs, unitOf(0xA1, 0xE7));
    const Units symbol =
        (isA3 | unitsEqualTo(leads, 0xA1)) & unitsWithin(trails, 0xA1, 0xFF) & ~other;
    const Units ideograph = unitsWithin(leads, 0x81, 0xA0) | unitsWithin(leads, 0xB0, 0xF7);
    const Units toSmall = ifcase ? unitsWithin(trails, 0xC1, 0xDA) & everyUnit(0x20) : everyUnit(0);
    const Units ascii = trails - everyUnit(0x80) + toSmall;
    const Units folded = printable | blank;
    const Units units = (pairs & ~folded) | (ascii & printable) | (everyUnit(' ') & blank);
    std::memcpy(units_, &units, sizeof units);
    unfolded_ = ~lowBytes(folded);
    count_ = std::countr_one(lowBytes(symbol | ideograph | blank)) / 8;
  }

  int count() const { return count_; }

  // Writes one of them, and maybe one byte after it that does not count.
  void put(int i, FoldedOutput& out) const {
    storeUnit(out.pdest, units_[i]);
    out.pdest += 1 + static_cast<std::ptrdiff_t>(unfolded_ >> 8 * i & 1);
  }

 private:
  gchar_t units_[kBlockUnits];
  Block unfolded_;  // a byte for each
  int count_;
};

// Takes several simple characters of `in`: ASCII, eight pairs at once, or, where the input may not
// be read ahead, a run of ideographs. Returns false when there are none.
template <class Input>
[[gnu::always_inline]] inline bool takePlainRun(Input& in, FoldedOutput& out, std::ptrdiff_t room,
                                                bool ifcase) {
  const Byte* psrc = in.psrc;
  if (isAscii(*psrc)) {
    // One byte less, since a space merges with a TAB that follows it.
    auto left = std::min(room, in.reach() - 1);
    for (; in.mayReadAhead && left >= kBlockBytes; left -= kBlockBytes) {
      const Block block = loadBlock(psrc);
      const Block behind = loadBlock(psrc + 1) & ~inEveryByte(0x80);
      if (!isAllAscii(block) || bytesWithin(behind, '\t', '\t') != 0) break;
      out.put(ifcase ? lowered(block) : block);
      psrc += kBlockBytes;
    }
    for (; left > 0 && isAscii(*psrc) && in.isTrail(*psrc); --left) {
      if (psrc[1] == '\t' && psrc[0] == ' ') break;
      out.put(ifcase ? loweredAscii(*psrc) : *psrc);
      ++psrc;
    }
  } else if (in.mayReadAhead) {
    // Two bytes of room stay for what comes next, which overwrites the byte that does not count.
    for (auto left = std::min(room - 2, in.reach()); left >= 2 * kBlockUnits;
         left -= 2 * kBlockUnits) {
      const FoldedPairs pairs(loadUnits(psrc), ifcase);
      if (pairs.count() != kBlockUnits) {
        for (int i = 0; i < pairs.count(); ++i) pairs.put(i, out);
        psrc += 2 * pairs.count();
        break;
      }
      unrolled<kBlockUnits>([&](int i) { pairs.put(i, out); });
      psrc += 2 * kBlockUnits;
    }
  } else {
    for (auto pairs = room / 2; pairs > 0 && isIdeographLead(*psrc) && in.isTrail(psrc[1]);
         --pairs) {
      out.put(loadUnit(psrc));
      psrc += 2;
    }
  }
  return psrc != std::exchange(in.psrc, psrc);
}

}  // namespace sgbk

#endif
