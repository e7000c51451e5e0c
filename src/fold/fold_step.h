// One character of GBK text in half-width form: the step that all folding operations share.

#ifndef SGBK_FOLD_FOLD_STEP_H
#define SGBK_FOLD_FOLD_STEP_H

#include <cstdint>

#include "core/half_width.h"

namespace sgbk {

// Text of a known length. A NUL is a character of it.
class CountedInput {
 public:
  CountedInput(const char* src, std::size_t srclen) : p(bytesOf(src)), end_(p + srclen) {}
  bool atEnd() const { return p == end_; }
  bool hasPair() const { return reach() >= 2; }

  // The bytes in which the end need not be looked for, and what tells a trail byte among them.
  static constexpr bool mayReadAhead = true;
  std::ptrdiff_t reach() const { return end_ - p; }
  static bool isTrail(Byte) { return true; }

  const Byte* p;

 private:
  const Byte* const end_;
};

// Text ended by a NUL, which is no trail byte either.
class TerminatedInput {
 public:
  explicit TerminatedInput(const char* src) : p(bytesOf(src)) {}
  bool atEnd() const { return *p == 0; }
  bool hasPair() const { return isTrail(p[1]); }

  // No byte may be read before the one in front of it is known not to be the NUL.
  static constexpr bool mayReadAhead = false;
  static std::ptrdiff_t reach() { return PTRDIFF_MAX; }
  static bool isTrail(Byte b) { return b != 0; }

  const Byte* p;
};

// Where folded characters go when there is room for what is put.
struct FoldedOutput {
  char* next;
  // Bytes in memory order: one, a double-byte character, or a block.
  template <class Bytes>
  void put(Bytes bytes) {
    std::memcpy(next, &bytes, sizeof bytes);
    next += sizeof bytes;
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
  const Byte b = *in.p;
  if (isAscii(b)) {
    if (spaceTab == SpaceTab::merged && b == leadOf(TAB_CONVERSION_CHAR) && in.hasPair() &&
        loadUnit(in.p) == TAB_CONVERSION_CHAR) {
      in.p += 2;
      return out.put(Byte{'\t'});
    }
    in.p += 1;
    return out.put(ifcase ? loweredAscii(b) : b);
  }
  if (b == 0x80 || !in.hasPair()) {  // a lead byte alone at the end is no character
    in.p += 1;
    return;
  }
  const gchar_t pair = loadUnit(in.p);
  in.p += 2;
  if (isIdeographLead(b)) return out.put(unfolded(pair, pair));
  const gchar_t folded = ifcase ? toLowerCase(pair) : pair;
  if (const Byte ascii = halfWidth(folded, yen)) return out.put(ascii);
  if (isgcharspace(pair)) return out.put(Byte{' '});
  out.put(unfolded(pair, folded));
}

}  // namespace sgbk

#endif
