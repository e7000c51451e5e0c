// trimgPunc: removes shapes, excess blanks and long runs of punctuation.

#include <array>
#include <utility>

#include "core/pair_block.h"
#include "sgbk/support.h"

namespace {

// A run of this many units or more is taken for decoration.
constexpr std::ptrdiff_t kLongRun = 9;

enum class Kind { ordinary, mark, shape, blank, lineEnd };

Kind kindOfSymbol(gchar_t unit) {
  if (unit == RETURN_CONVERSION_CHAR) return Kind::lineEnd;
  if (isGBKUndefinedChar(unit)) return Kind::blank;
  if (isShapeChar(unit)) return Kind::shape;
  return isGraphChar(unit) ? Kind::mark : Kind::ordinary;
}

// Called for every unit, so the common cases are inlined.
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

// Which of sixteen units are of each kind. Units that are in none of the masks need a closer look.
struct Kinds {
  explicit Kinds(const sgbk::PairBlock& units) {
    using sgbk::equalTo;
    using sgbk::maskOf;
    using sgbk::within;
    const sgbk::Bytes leads = units.leads;
    const sgbk::Bytes trails = units.trails;
    const sgbk::Bytes plain = within(leads, 0x01, 0xA0) | within(leads, 0xB0, 0xF7) |
                              (within(leads, 0xAA, 0xFF) & within(trails, 0x00, 0xA0));
    const sgbk::Bytes lettersAndDigits =
        within(trails & sgbk::Byte{0xDF}, 0xC1, 0xDA) | within(trails, 0xB0, 0xB9);
    ordinary = maskOf(plain | (equalTo(leads, 0xA3) & lettersAndDigits));
    lineEnds = maskOf(units.equalToPair(RETURN_CONVERSION_CHAR));
    blanks = maskOf(units.equalToPair(CHINESE_SPACE_CHAR)) | lineEnds;
    // In rows A1 and A3, letters included.
    marks = ~blanks & maskOf(equalTo(leads | sgbk::Byte{0x02}, 0xA3) & within(trails, 0xA1, 0xED));
  }

  sgbk::Mask ordinary, marks, blanks, lineEnds;
};

// Copies a run of punctuation to `out`, with one blank for each run of blanks in it. Returns the
// end of the copy.
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

// A source that ends at its first 0 unit. Nothing may be read after it, so the units are tested one
// by one, and each once.
struct TerminatedUnits {
  const gchar_t* p;
  const gchar_t* tested = p;
  bool atEnd() const { return *p == 0; }
  bool hasBlock() {
    if (tested < p) tested = p;
    if (tested - p < sgbk::kBlockPairs && isBlock(tested)) tested += sgbk::kBlockPairs;
    return tested - p >= sgbk::kBlockPairs;
  }
  static bool isBlock(const gchar_t* units) {
    return [units]<int... i>(std::integer_sequence<int, i...>) { return ((units[i] != 0) && ...); }
    (std::make_integer_sequence<int, sgbk::kBlockPairs>{});
  }
};

// A source that ends at `tail`. A 0 unit before it is dropped; being of the ordinary kind, it ends
// a run.
struct CountedUnits {
  const gchar_t* p;
  const gchar_t* const tail;
  bool atEnd() const { return p == tail; }
  bool hasBlock() const { return tail - p >= sgbk::kBlockPairs; }
};

// Takes the rest of a run of blanks and shapes, and returns the unit to write for the whole run.
template <class Input>
[[gnu::always_inline]] inline gchar_t takeBlanks(Input& in, bool ifnewline) {
  for (bool whole = true; whole && in.hasBlock();) {
    const Kinds kinds{sgbk::PairBlock(in.p)};
    const sgbk::Mask run = sgbk::before(~kinds.blanks & sgbk::kWholeMask);
    ifnewline = ifnewline || (kinds.lineEnds & run) != 0;
    in.p += sgbk::countUpTo(run);
    whole = run == sgbk::kWholeMask;
  }
  for (; !in.atEnd() && isPassedOver(kindOf(*in.p)); ++in.p) {
    ifnewline = ifnewline || *in.p == RETURN_CONVERSION_CHAR;
  }
  return ifnewline ? RETURN_CONVERSION_CHAR : CHINESE_SPACE_CHAR;
}

// Takes sixteen units at a time while they are ordinary ones, short runs of punctuation, and
// blanks. May write units after the end of the output.
template <class Input>
[[gnu::always_inline]] inline gchar_t* takePlain(Input& in, gchar_t* out) {
  constexpr int kBits = sgbk::kMaskBits;
  constexpr sgbk::Mask kOne = (1 << kBits) - 1;
  bool open = false;  // the last unit copied is punctuation or a blank, and its run may go on
  sgbk::Mask blankBefore = 0;
  while (in.hasBlock()) {
    const auto units = sgbk::load<std::array<sgbk::Bytes, 2>>(in.p);
    const Kinds kinds{sgbk::PairBlock(in.p)};
    const sgbk::Mask inRuns = (kinds.blanks & ~kinds.lineEnds) | (kinds.marks & ~kinds.ordinary);
    const sgbk::Mask twos = inRuns & inRuns >> kBits;
    const sgbk::Mask fours = twos & twos >> 2 * kBits;
    const sgbk::Mask longRuns = fours & fours >> 4 * kBits;
    const sgbk::Mask others = (~(kinds.ordinary | kinds.marks | kinds.blanks) & sgbk::kWholeMask) |
                              longRuns | (kinds.blanks & (kinds.blanks << kBits | blankBefore));
    // A run ends at an ordinary unit, and punctuation ends before a line end.
    const sgbk::Mask ends =
        (kinds.ordinary | (kinds.marks & kinds.lineEnds >> kBits)) & sgbk::before(others);
    if (ends == 0 && open && (blankBefore != 0 || (kinds.lineEnds & 1) == 0)) break;
    std::memcpy(out, &units, sizeof units);
    open = others == 0 && ends >> (sgbk::kBlockPairs - 2) * kBits == kOne;
    if (open || ends >> (sgbk::kBlockPairs - 1) * kBits != 0) {
      in.p += sgbk::kBlockPairs;
      out += sgbk::kBlockPairs;
      blankBefore = kinds.blanks >> (sgbk::kBlockPairs - 1) * kBits;
      continue;
    }
    const int kept = sgbk::countUpTo(ends);
    out += kept;
    blankBefore = 0;
    const sgbk::Mask behind = sgbk::kWholeMask << kept * kBits;
    const sgbk::Mask run = kinds.blanks & behind;
    if (run == (sgbk::kWholeMask & behind)) {
      // The position of the next block does not depend on the content of this one.
      in.p += sgbk::kBlockPairs;
      *out++ = takeBlanks(in, (kinds.lineEnds & behind) != 0);
    } else {
      in.p += kept;
      if ((run >> kept * kBits & 1) != 0) {
        *out++ = takeBlanks(in, false);
      } else if (kept == 0) {
        break;
      }
    }
  }
  if (!open) return out;
  --in.p;
  return out - 1;
}

template <class Input>
size_t trim(Input in, gchar_t* const dest0) {
  gchar_t* out = dest0;
  while (!in.atEnd() && (*in.p == 0 || isPassedOver(kindOf(*in.p)))) ++in.p;
  // The first character stays whatever it is, so leading punctuation is never lost.
  if (!in.atEnd()) *out++ = *in.p++;
  while (out = takePlain(in, out), !in.atEnd()) {
    const gchar_t c = *in.p;
    const Kind kind = kindOf(c);
    if (kind == Kind::ordinary) {
      if (c != 0) *out++ = c;
      ++in.p;
    } else if (kind == Kind::mark) {
      const gchar_t* const run = in.p;
      for (Kind next = kind; next == Kind::mark || next == Kind::blank; next = kindOf(*in.p)) {
        ++in.p;
        if (in.atEnd()) break;
      }
      if (in.p - run < kLongRun) {
        out = copyMarks(run, in.p, out);
      } else if (!isgcharspace(out[-1])) {
        *out++ = c;
      }
    } else if (kind == Kind::shape) {
      ++in.p;
    } else {
      *out++ = takeBlanks(in, false);
    }
  }
  while (out != dest0 && isgcharspace(out[-1])) --out;
  *out++ = 0;
  return static_cast<size_t>(out - dest0);
}

}  // namespace

size_t trimgPunc(const gchar_t* src, gchar_t* dest) { return trim(TerminatedUnits{src}, dest); }

size_t trimgPunc(const gchar_t* src, size_t srclen, gchar_t* dest) {
  return trim(CountedUnits{src, srclen > 0 ? src + srclen - 1 : src}, dest);
}
