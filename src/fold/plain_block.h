// Eight bytes of text folded at once: ASCII, ideographs, or widened ASCII.

#ifndef SGBK_FOLD_PLAIN_BLOCK_H
#define SGBK_FOLD_PLAIN_BLOCK_H

#include <algorithm>

#include "core/byte_block.h"
#include "fold/fold_step.h"

namespace sgbk {

// Tests of all bytes or units of a block at once. Each gives the top bit of those that pass.

inline constexpr Block kTopOfBytes = inEveryByte(0x80);
inline constexpr Block kTopOfUnits = inEveryUnit(0x8000);

// For bytes below 80.
constexpr Block bytesWithin(Block ascii, Byte first, Byte last) {
  return (ascii + inEveryByte(static_cast<Byte>(0x80 - first))) &
         ~(ascii + inEveryByte(static_cast<Byte>(0x7F - last))) & kTopOfBytes;
}

// For units below 8000.
constexpr Block unitsWithin(Block units, Byte first, Byte last) {
  return (units + inEveryUnit(static_cast<gchar_t>(0x8000 - first))) &
         (inEveryUnit(static_cast<gchar_t>(0x8000 + last)) - units) & kTopOfUnits;
}

constexpr Block unitsEqual(Block units, gchar_t unit) {
  constexpr Block kBelowTop = ~kTopOfUnits;
  const Block difference = units ^ inEveryUnit(unit);
  return ~(((difference & kBelowTop) + kBelowTop) | difference) & kTopOfUnits;
}

constexpr Block leadsOf(Block units) { return units & inEveryUnit(0xFF); }
constexpr Block trailsOf(Block units) { return units >> 8 & inEveryUnit(0xFF); }

// Full-width ASCII of row A3, ideographic spaces and line ends: what widened text consists of.
constexpr Block widenedBlanks(Block units) {
  return unitsEqual(units, CHINESE_SPACE_CHAR) | unitsEqual(units, RETURN_CONVERSION_CHAR);
}
constexpr bool isAllWidened(Block units) {
  const Block trails = trailsOf(units);
  const Block yen = unitsWithin(trails, 0xA4, 0xA4);
  const Block printable =
      unitsWithin(leadsOf(units), 0xA3, 0xA3) & unitsWithin(trails, 0xA1, 0xFD) & ~yen;
  return (printable | widenedBlanks(units)) == kTopOfUnits;
}

// The four ASCII bytes that such a block folds to.
constexpr Block narrowed(Block widened) {
  const Block blanks = (widenedBlanks(widened) >> 15) * 0xFFFF;
  const Block ascii =
      ((trailsOf(widened) - inEveryUnit(0x80)) & ~blanks) | (inEveryUnit(' ') & blanks);
  const Block inPairs = (ascii | ascii >> 8) & 0x0000FFFF0000FFFF;
  return (inPairs | inPairs >> 16) & 0xFFFFFFFF;
}

constexpr Block lowered(Block ascii) { return ascii + (bytesWithin(ascii, 'A', 'Z') >> 2); }

// Takes characters of `in` that are like the first one and need no look at each: a run of
// ideographs, or whole blocks of ASCII or of widened ASCII. False when there are none.
template <class Input>
[[gnu::always_inline]] inline bool takePlainRun(Input& in, FoldedOutput& out, std::ptrdiff_t room,
                                                bool ifcase) {
  const Byte* p = in.p;
  if (isIdeographLead(*p)) {
    for (auto pairs = std::min(room, in.reach()) / 2; pairs > 0; --pairs) {
      if (!isIdeographLead(*p) || !in.isTrail(p[1])) break;
      out.put(loadUnit(p));
      p += 2;
    }
    return p != std::exchange(in.p, p);
  }
  if (!in.mayReadAhead) return false;
  if (isAscii(*p)) {
    // One byte more, since a TAB behind the block would merge with a space at its end.
    for (auto left = std::min(room, in.reach() - 1); left >= kBlockBytes; left -= kBlockBytes) {
      const Block block = loadBlock(p);
      const Block behind = loadBlock(p + 1) & ~kTopOfBytes;
      if (!isAllAscii(block) || bytesWithin(behind, '\t', '\t') != 0) break;
      out.put(ifcase ? lowered(block) : block);
      p += kBlockBytes;
    }
  } else {
    for (auto left = std::min(room, in.reach()); left >= kBlockBytes; left -= kBlockBytes) {
      const Block block = loadBlock(p);
      if (!isAllWidened(block)) break;
      const Block ascii = narrowed(block);
      out.put(static_cast<std::uint32_t>(ifcase ? lowered(ascii) : ascii));
      p += kBlockBytes;
    }
  }
  return p != std::exchange(in.p, p);
}

}  // namespace sgbk

#endif
