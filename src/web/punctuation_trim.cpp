// trimgPunc: thinning of blanks, shapes and long runs of punctuation marks.

#include "core/gbk_bytes.h"
#include "sgbk/support.h"

namespace {

// A run of this many marks and more is taken for decoration.
constexpr std::ptrdiff_t kLongRun = 9;

enum class Kind { ordinary, mark, shape, blank, lineEnd };

Kind kindOf(gchar_t unit) {
  // Ideographs and single bytes: most of any text.
  if (sgbk_detail::hasNoUndefinedCodes(sgbk::leadOf(unit))) return Kind::ordinary;
  if (unit == RETURN_CONVERSION_CHAR) return Kind::lineEnd;
  if (isgcharspace(unit)) return Kind::blank;
  if (isShapeChar(unit)) return Kind::shape;
  return isGraphChar(unit) ? Kind::mark : Kind::ordinary;
}

bool isBlank(Kind kind) { return kind >= Kind::blank; }
bool isPassedOver(Kind kind) { return kind >= Kind::shape; }

// The pass over a source whose end `atEnd` tells; a 0 unit before the end is dropped. Being of the
// ordinary kind, it ends the runs on either side of it.
template <class AtEnd>
size_t trim(const gchar_t* in, gchar_t* const dest, AtEnd atEnd) {
  gchar_t* out = dest;
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
      do {
        ++in;
      } while (!atEnd(in) && (kindOf(*in) == Kind::mark || kindOf(*in) == Kind::blank));
      const std::ptrdiff_t punccount = in - puncbegin;
      if (punccount >= kLongRun) {
        if (!isBlank(kindOf(out[-1]))) *out++ = c;
        continue;
      }
      for (const gchar_t* mark = puncbegin; mark != in; ++mark) {
        if (!isgcharspace(*mark)) {
          *out++ = *mark;
        } else if (!isgcharspace(out[-1])) {
          *out++ = CHINESE_SPACE_CHAR;
        }
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
  while (out != dest && isgcharspace(out[-1])) --out;
  *out++ = 0;
  return static_cast<size_t>(out - dest);
}

}  // namespace

size_t trimgPunc(const gchar_t* src, gchar_t* dest) {
  return trim(src, dest, [](const gchar_t* p) { return *p == 0; });
}

size_t trimgPunc(const gchar_t* src, size_t srclen, gchar_t* dest) {
  const gchar_t* const src_tail = srclen > 0 ? src + srclen - 1 : src;
  return trim(src, dest, [src_tail](const gchar_t* p) { return p == src_tail; });
}
