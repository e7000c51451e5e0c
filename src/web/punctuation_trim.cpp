// trimgPunc: thinning of blanks, shapes and long runs of punctuation marks.

#include "core/gbk_bytes.h"
#include "sgbk/support.h"

namespace {

// A run of this many marks and more is taken for decoration.
constexpr std::ptrdiff_t kLongRun = 9;

enum class Kind { ordinary, mark, shape, blank, lineEnd };

Kind kindOfSymbol(gchar_t unit) {
  if (unit == RETURN_CONVERSION_CHAR) return Kind::lineEnd;
  if (isGBKUndefinedChar(unit)) return Kind::blank;
  if (isShapeChar(unit)) return Kind::shape;
  return isGraphChar(unit) ? Kind::mark : Kind::ordinary;
}

// Asked for every unit, so what text mostly consists of is told where it is asked.
[[gnu::always_inline]] inline Kind kindOf(gchar_t unit) {
  if (sgbk::isSingleOrIdeograph(unit)) return Kind::ordinary;
  if (unit == CHINESE_SPACE_CHAR) return Kind::blank;
  if (sgbk::leadOf(unit) != 0xA3) return kindOfSymbol(unit);
  const unsigned trail = sgbk::trailOf(unit);
  using sgbk_detail::within;
  if (within(trail | 0x20, 0xE1, 0xFA) && trail >= 0xC1) return Kind::ordinary;
  if (within(trail, 0xB0, 0xB9)) return Kind::ordinary;
  return within(trail, 0xA1, 0xFE) ? Kind::mark : kindOfSymbol(unit);
}

bool isPassedOver(Kind kind) { return kind >= Kind::shape; }

// Copies a run of marks to `out`, each of its blanks as one; returns the end of the copy.
gchar_t* copyMarks(const gchar_t* run, const gchar_t* end, gchar_t* out) {
  for (; run != end; ++run) {
    if (!isgcharspace(*run)) {
      *out++ = *run;
    } else if (!isgcharspace(out[-1])) {
      *out++ = CHINESE_SPACE_CHAR;
    }
  }
  return out;
}

// The pass over a source whose end `atEnd` tells; a 0 unit before the end is dropped. Being of the
// ordinary kind, it ends the runs on either side of it.
template <class AtEnd>
size_t trim(const gchar_t* in, gchar_t* const dest0, AtEnd atEnd) {
  gchar_t* out = dest0;
  while (!atEnd(in) && (*in == 0 || isPassedOver(kindOf(*in)))) ++in;
  // The first character stays whatever it is, so a text never loses its leading mark.
  if (!atEnd(in)) *out++ = *in++;
  while (!atEnd(in)) {
    const gchar_t c = *in;
    const Kind kind = kindOf(c);
    if (kind == Kind::ordinary) {
      if (c != 0) *out++ = c;
      ++in;
    } else if (kind == Kind::mark) {
      const gchar_t* const puncbegin = in;
      bool blanks = false;
      for (Kind next = kind; next == Kind::mark || next == Kind::blank; next = kindOf(*in)) {
        blanks = blanks || next == Kind::blank;
        ++in;
        if (atEnd(in)) break;
      }
      const std::ptrdiff_t punccount = in - puncbegin;
      if (punccount >= kLongRun) {
        if (!isgcharspace(out[-1])) *out++ = c;
      } else if (!blanks) {
        for (const gchar_t* mark = puncbegin; mark != in; ++mark) *out++ = *mark;
      } else {
        out = copyMarks(puncbegin, in, out);
      }
    } else if (kind == Kind::shape) {
      ++in;
    } else {
      bool ifnewline = false;
      for (Kind next = kind; isPassedOver(next); next = kindOf(*in)) {
        ifnewline = ifnewline || next == Kind::lineEnd;
        ++in;
        if (atEnd(in)) break;
      }
      *out++ = ifnewline ? RETURN_CONVERSION_CHAR : CHINESE_SPACE_CHAR;
    }
  }
  while (out != dest0 && isgcharspace(out[-1])) --out;
  *out++ = 0;
  return static_cast<size_t>(out - dest0);
}

}  // namespace

size_t trimgPunc(const gchar_t* src, gchar_t* dest) {
  return trim(src, dest, [](const gchar_t* p) { return *p == 0; });
}

size_t trimgPunc(const gchar_t* src, size_t srclen, gchar_t* dest) {
  const gchar_t* const src_tail = srclen > 0 ? src + srclen - 1 : src;
  return trim(src, dest, [src_tail](const gchar_t* p) { return p == src_tail; });
}
