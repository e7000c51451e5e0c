// Folding one character of GBK text to half-width: the step that all folding operations share.

#ifndef SGBK_FOLD_FOLD_STEP_H
#define SGBK_FOLD_FOLD_STEP_H

#include <string.h>

#include <cstddef>

#include "core/half_width.h"

namespace sgbk {

// Text of a given length, in which a NUL is a character.
class CountedInput {
 public:
  CountedInput(const char* src, std::size_t srclen) : psrc(bytesOf(src)), psrcend(psrc + srclen) {}
  bool atEnd() const { return psrc == psrcend; }
  bool hasPair() const { return reach() >= 2; }

  // How many bytes can be read without looking for the end.
  std::ptrdiff_t reach() const { return psrcend - psrc; }

  const Byte* psrc;

 private:
  const Byte* const psrcend;
};

// Text ended by a NUL, which is not taken as a trail byte.
class TerminatedInput {
 public:
  explicit TerminatedInput(const char* src) : psrc(bytesOf(src)), known_(psrc) {}
  bool atEnd() const { return *psrc == 0; }
  bool hasPair() const { return psrc[1] != 0; }

  // Looks for the NUL piece by piece, since the destination may hold little of a long text.
  std::ptrdiff_t reach() {
    constexpr std::ptrdiff_t kEnough = 64;
    constexpr std::size_t kPiece = 512;
    if (known_ - psrc < kEnough && *known_ != 0) {
      known_ = psrc + strnlen(reinterpret_cast<const char*>(psrc), kPiece);
    }
    return known_ - psrc;
  }

  const Byte* psrc;

 private:
  const Byte* known_;  // there is no NUL before it
};

// Where folded characters are written. The caller makes sure that there is room.
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

// Takes the next character of `in`, which is not at its end, and writes its half-width form: at
// most two bytes. unfolded   called with the pair as read and the same pair after case folding, for
// a character
//            that has no ASCII form; returns the two bytes to write as a unit
// Always inlined, since otherwise the positions would live in memory instead of registers.
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
  if (b == 0x80 || !in.hasPair()) {  // a lone lead byte at the end is dropped
    in.psrc += 1;
    return;
  }
  const gchar_t pair = loadUnit(in.psrc);
  in.psrc += 2;
  if (isSingleOrIdeograph(pair)) return out.put(unfolded(pair, pair));
  // Case folding never changes the lead byte.
  const Byte nextch = trailOf(ifcase ? toLowerCase(pair) : pair);
  const gchar_t folded = unitOf(b, nextch);
  if (const Byte ascii = halfWidth(folded, yen)) return out.put(ascii);
  if (isgcharspace(pair)) return out.put(Byte{' '});
  out.put(unfolded(pair, folded));
}

}  // namespace sgbk

#endif
