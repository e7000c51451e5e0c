// One character of GBK text in half-width form: the step that all folding operations share.

#ifndef SGBK_FOLD_FOLD_STEP_H
#define SGBK_FOLD_FOLD_STEP_H

#include "core/half_width.h"

namespace sgbk {

// Text of a known length. A NUL is a character of it.
class CountedInput {
 public:
  CountedInput(const char* src, std::size_t srclen) : p(bytesOf(src)), end_(p + srclen) {}
  bool atEnd() const { return p == end_; }
  bool hasPair() const { return end_ - p >= 2; }

  const Byte* p;

 private:
  const Byte* const end_;
};

// Text ended by a NUL, which is no trail byte either.
class TerminatedInput {
 public:
  explicit TerminatedInput(const char* src) : p(bytesOf(src)) {}
  bool atEnd() const { return *p == 0; }
  bool hasPair() const { return p[1] != 0; }

  const Byte* p;
};

// 0, 1 or 2 bytes to write.
struct Folded {
  int size;
  Byte bytes[2];
};

enum class SpaceTab { merged, kept };

// Takes the next character of `in`, which is not at its end, and returns what stands for it.
// unfolded   called with the pair as read and the same pair after case folding, for a character
//            that has no ASCII form; returns the two bytes to write as a unit
template <SpaceTab spaceTab, Yen yen, class Input, class Unfolded>
inline Folded foldNext(Input& in, bool ifcase, Unfolded unfolded) {
  const Byte b = *in.p;
  if (b <= 0x80) {
    if (spaceTab == SpaceTab::merged && b == leadOf(TAB_CONVERSION_CHAR) && in.hasPair() &&
        loadUnit(in.p) == TAB_CONVERSION_CHAR) {
      in.p += 2;
      return {1, {'\t', 0}};
    }
    in.p += 1;
    if (b == 0x80) return {0, {}};
    const bool folds = ifcase && b >= 'A' && b <= 'Z';
    return {1, {folds ? static_cast<Byte>(b + ('a' - 'A')) : b, 0}};
  }
  if (!in.hasPair()) {  // a lead byte alone at the end is no character
    in.p += 1;
    return {0, {}};
  }
  const gchar_t pair = loadUnit(in.p);
  in.p += 2;
  if (isgcharspace(pair)) return {1, {' ', 0}};
  const gchar_t folded = ifcase ? toLowerCase(pair) : pair;
  if (const Byte ascii = halfWidth(folded, yen)) return {1, {ascii, 0}};
  const gchar_t unit = unfolded(pair, folded);
  return {2, {leadOf(unit), trailOf(unit)}};
}

}  // namespace sgbk

#endif
