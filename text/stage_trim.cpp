// One pass, by a table: most lines of a page change between words and punctuation every few bytes,
// and a jump for each change would cost more than all the rest.

#include <array>

#include "code_table.h"
#include "core/byte_block.h"
#include "made_once.h"
#include "stage.h"

namespace sgbk::text {
namespace {

// rare  line ends, blanks that are not written as they are, NUL, and what has four bytes
enum Kind : Byte { kOrdinary, kMark, kBlank, kShape, kRare };

struct Kinds {
  std::array<Kind, 0x10000> of{};  // by unit, or by ASCII byte

  Kinds() {
    for (unsigned i = 0; i < of.size(); ++i) {
      const bool isFour = isFourBytesDigit(trailOf(static_cast<gchar_t>(i)));
      of[i] = isFour ? kRare : kindOf(static_cast<gchar_t>(i));
    }
    for (Byte c = 0; c < 0x80; ++c) {
      of[c] = kindOf(libraryTables().widened[c]);
      if (c < ' ' && c != '\t' && of[c] == kBlank) of[c] = kRare;
    }
    of['\0'] = of[0x7F] = of['\r'] = of['\n'] = kRare;
  }

  static Kind kindOf(gchar_t unit) {
    return isgcharspace(unit)  ? kBlank
           : isShapeChar(unit) ? kShape
           : isGraphChar(unit) ? kMark
                               : kOrdinary;
  }
};

// What a line has come to, as the place of its steps in their table. Blanks are written when they
// come, and taken back at the end of a line.
constexpr unsigned kStride = 8;
constexpr unsigned kStart = 0 * kStride;      // nothing but blanks and shapes
constexpr unsigned kText = 1 * kStride;       // any character, or a run that is over
constexpr unsigned kBlanks = 2 * kStride;     // a run of blanks, with shapes among them
constexpr unsigned kLong = 3 * kStride;       // a run is too long: the rest of it is dropped
constexpr unsigned kRun = 4 * kStride;        // the first of eight punctuation marks, ...
constexpr unsigned kRunBlank = 12 * kStride;  // ... the same with a blank as the last of the run
constexpr unsigned kNoStep = 20 * kStride;    // the ninth, or what is rare

// The next state, and whether the character is kept.
constexpr std::pair<unsigned, bool> stepOf(unsigned state, unsigned kind) {
  const bool isRun = state >= kRun;
  const unsigned length = isRun ? (state - kRun) % (8 * kStride) + kStride : 0;
  const bool isLongest = length == 8 * kStride;
  switch (kind) {
    case kOrdinary: return {kText, true};
    case kMark:
      if (state == kStart) return {kText, true};
      if (state == kLong) return {kLong, false};
      return {isLongest ? kNoStep : kRun + length, true};
    case kBlank:
      if (isRun) return {isLongest ? kNoStep : kRunBlank + length, state < kRunBlank};
      return {state == kText ? kBlanks : state, state == kText};
    case kShape: return {isRun || state == kLong ? kText : state, false};
    default: return {kNoStep, false};
  }
}

// Two tables, since the next state is what the character after it waits for.
constexpr struct Steps {
  std::array<Byte, kNoStep> next{};
  std::array<Byte, kNoStep> keeps{};  // all bits, or none

  constexpr Steps() {
    for (unsigned i = 0; i < kNoStep; ++i) {
      const auto [state, isKept] = stepOf(i - i % kStride, i % kStride);
      next[i] = static_cast<Byte>(state);
      keeps[i] = isKept ? 0xFF : 0;
    }
  }
} kSteps;

// Bytes of blanks that are held back at most, since the line may end. Runs of blanks are one blank
// by then; only long runs of punctuation, dropped between them, leave more.
constexpr std::ptrdiff_t kMostBlanks = 1024;

class TrimStage : public Stage {
 public:
  std::size_t apply(std::string_view text, bool ended, Buffer& out) override {
    char* const begin = out.room(text.size() + pending_.size());
    char* to = begin + pending_.view().copy(begin, pending_.size());
    char* run = begin + run_;
    std::size_t state = state_;
    // False where it takes more than a look at the table.
    const auto take = [&](Kind kind, gchar_t unit, unsigned size) {
      const std::size_t step = state + kind;
      const std::size_t next = kSteps.next[step];
      if (next == kNoStep) [[unlikely]]
        return false;
      // Less work than to write it down each time, and no jump.
      run = next == kRun ? to : run;
      storeUnit(to, unit);
      to += size & kSteps.keeps[step];
      state = next;
      return true;
    };
    // The size of the blank that ends at `end`, 0 for none.
    const auto blankBefore = [begin](const char* end) {
      if (end == begin) return 0;
      if (end[-1] == ' ' || end[-1] == '\t' || end[-1] == '\r') return 1;
      return end[-1] == '\xA1' && end - begin >= 2 && end[-2] == '\xA1' ? 2 : 0;
    };
    const auto takeBackBlanks = [&] {
      const char* const last = to;
      while (const int size = state == kStart ? 0 : blankBefore(to)) {
        if (last - to + size > kMostBlanks) break;
        to -= size;
      }
    };
    // Of a run that is too long its first mark stays, or nothing after a blank.
    const auto dropRun = [&] {
      to = blankBefore(run) != 0 ? run : run + sizeAt(run);
      state = kLong;
    };
    const char* p = text.data();
    const char* const end = p + text.size();
    while (p != end) {
      if (end - p > kBlockBytes && isAllAscii(loadBlock(bytesOf(p)))) {
        // Pages are indented: a quarter of them is such blanks.
        if (kSteps.next[state + kBlank] == state && loadBlock(bytesOf(p)) == inEveryByte(' ')) {
          p += kBlockBytes;
          continue;
        }
        // Where the next one begins is known before what this one is.
        const char* const blockEnd = p + kBlockBytes;
        while (p != blockEnd && take(kinds_.of[static_cast<Byte>(*p)], static_cast<Byte>(*p), 1))
          ++p;
        if (p == blockEnd) continue;
      } else {
        const gchar_t unit = loadUnit(bytesOf(p));
        const unsigned size = sizeAt(p);
        if (take(kindAt(p), unit, size)) {
          p += size;
          continue;
        }
      }
      const char c = *p;
      if (kindAt(p) != kRare) {
        dropRun();
      } else if (!isAscii(static_cast<Byte>(c))) {
        to = std::copy_n(p, 4, to);
        state = kText;
        p += 4;
      } else if (c == '\r' && p + 1 == end && !ended) {
        break;  // it must be seen what follows
      } else {
        ++p;
        if (c == '\n' || (c == '\r' && (p == end || *p == '\n'))) {
          takeBackBlanks();
          *to++ = c;
          state = kStart;
        } else if (c == '\r' && state != kStart) {
          // A line end within the line: it stands for all blanks around it.
          if (state == kBlanks) to -= blankBefore(to);
          *to++ = c;
          state = kBlanks;
        } else if (c != '\r' && c != '\0' && !take(kBlank, ' ', 1)) {
          dropRun();
        }
      }
    }
    // Whether they are written depends on what follows.
    const char* const written = to;
    if (state >= kRun && !ended) to = run;
    takeBackBlanks();
    out.setEnd(to);
    pending_.clear();
    if (!ended) pending_.append({to, static_cast<std::size_t>(written - to)});
    run_ = state >= kRun ? run - to : 0;
    state_ = state;
    return static_cast<std::size_t>(p - text.data());
  }

 private:
  // Every buffer has a byte after its end.
  Kind kindAt(const char* p) const {
    const gchar_t unit = loadUnit(bytesOf(p));
    return kinds_.of[sizeAt(p) == 2 ? unit : unit & 0x7F];
  }
  static unsigned sizeAt(const char* p) { return isAscii(static_cast<Byte>(*p)) ? 1 : 2; }

  const Kinds& kinds_ = madeOnce<Kinds>();
  std::size_t state_ = kStart;
  Buffer pending_;          // a run that may prove too long, and blanks before it or by themselves
  std::ptrdiff_t run_ = 0;  // where it begins in them
};

}  // namespace

std::unique_ptr<Stage> makeTrimStage() { return std::make_unique<TrimStage>(); }

}  // namespace sgbk::text
