// One character of GBK text in half-width form: the step that all folding operations share.

#ifndef SGBK_FOLD_FOLD_STEP_H
#define SGBK_FOLD_FOLD_STEP_H

#include <cstdint>

#include "core/half_width.h"

namespace sgbk {

// Text of a known length. A NUL is a character of it.
class CountedInput {
 public:
  CountedInput(const char* src, std::size_t srclen) : psrc(bytesOf(src)), psrcend(psrc + srclen) {}
  bool atEnd() const { return psrc == psrcend; }
  bool hasPair() const { return reach() >= 2; }

  // The bytes in which the end need not be looked for, and what tells a trail byte among them.
  static constexpr bool mayReadAhead = true;
  std::ptrdiff_t reach() const { return psrcend - psrc; }
  static bool isTrail(Byte) { return true; }

  const Byte* psrc;

 private:
  const Byte* const psrcend;
};

// Text ended by a NUL, which is no trail byte either.
class TerminatedInput {
 public:
  explicit TerminatedInput(const char* src) : psrc(bytesOf(src)) {}
  bool atEnd() const { return *psrc == 0; }
  bool hasPair() const { return isTrail(psrc[1]); }

  // No byte may be read before the one in front of it is known not to be the NUL.
  static constexpr bool mayReadAhead = false;
  static std::ptrdiff_t reach() { return PTRDIFF_MAX; }
  static bool isTrail(Byte b) { return b != 0; }

  const Byte* psrc;
};

// Where folded characters go when there is room for what is put.
struct FoldedOutput {
  char* pdest;
  // Bytes in memory order: one, a double-byte character, or a block.
  template <class Bytes>
  void put(Bytes bytes) {
    std::memcpy(pdest, &bytes, sizeof bytes);
    pdest += sizeof bytes;
  }
};

enum class SpaceTab { merged, kept };

constexpr Byte loweredAscii(Byte b) {
  return static_cast<Byte>(b + (sgbk_detail::within(b, 'A', 'Z') ? 'a' - 'A' : 0));
}

// Takes the next character of `in`, which is not at its end, and puts what stands for it: at most
// two bytes.
// unfolded   called with the pair as read and the same pair after case folding, for a character
//            that has no ASCII form; returns the two bytes to write as a unit
// Inlined wherever it is called, or the positions would live in memory instead of registers.
template <SpaceTab spaceTab, Yen yen, class Input, class Unfolded>
[[gnu::always_inline]] inline void foldNext(Input& in, FoldedOutput& out, bool ifcase,
                                            Unfolded unfolded) {
  const Byte b = *in.psrc;
  if (isAscii(b)) {
    if (spaceTab == SpaceTab::merged && b == leadOf(TAB_CONVERSION_CHAR) && in.hasPair() &&
        loadUnit(in.psrc) == TAB_CONVERSION_CHAR) {
      in.psrc += 2;
      return out.put(Byte{'\t'});
    }
    in.psrc += 1;
    return out.put(ifcase ? loweredAscii(b) : b);
  }
  if (b == 0x80 || !in.hasPair()) {  // a lead byte alone at the end is no character
    in.psrc += 1;
    return;
  }
  const gchar_t pair = loadUnit(in.psrc);
  in.psrc += 2;
  if (isIdeographLead(b)) return out.put(unfolded(pair, pair));
  // Case folding never changes the lead byte.
  const Byte nextch = trailOf(ifcase ? toLowerCase(pair) : pair);
  const gchar_t folded = unitOf(b, nextch);
  if (const Byte ascii = halfWidth(folded, yen)) return out.put(ascii);
  if (isgcharspace(pair)) return out.put(Byte{' '});
  out.put(unfolded(pair, folded));
}

}  // namespace sgbk

#endif
