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
enum Kind : Byte { kOrdinary, kMark, kBlank, kShape, kRare, kKinds };

struct Kinds {
  std::array<Kind, 0x10000> of{};  // by unit, or by ASCII byte

  Kinds() {
    for (unsigned i = 0; i < of.size(); ++i) {
      const bool isFour = isFourBytesDigit(trailOf(static_cast<gchar_t>(i)));
      of[i] = isFour ? kRare : kindOf(static_cast<gchar_t>(i));
    }
    for (Byte c = 0; c < 0x80; ++c) of[c] = kindOf(libraryTables().widened[c]);
    for (Byte c = 1; c < ' '; ++c) of[c] = c == '\t' || of[c] != kBlank ? of[c] : kRare;
    of[0x7F] = of['\r'] = of['\n'] = kRare;
  }

  static Kind kindOf(gchar_t unit) {
    return unit == 0            ? kRare
           : isgcharspace(unit) ? kBlank
           : isShapeChar(unit)  ? kShape
           : isGraphChar(unit)  ? kMark
                                : kOrdinary;
  }
};

// What a line has come to, as the place of its steps in their table. Blanks are written when they
// come, and taken back at the end of a line.
constexpr unsigned kStride = 8;
constexpr unsigned kStart = 0 * kStride;       // nothing but blanks and shapes
constexpr unsigned kText = 1 * kStride;        // any character
constexpr unsigned kBlanks = 2 * kStride;      // a run of blanks, with shapes among them
constexpr unsigned kAfterBlank = 3 * kStride;  // a run of punctuation ended in a blank, and is over
constexpr unsigned kLong = 4 * kStride;        // it is too long: the rest of it is dropped
constexpr unsigned kLongBlank = 5 * kStride;   // the same after a blank, where all of it is
constexpr unsigned kRun = 6 * kStride;         // the first of eight punctuation marks, ...
constexpr unsigned kRunBlank = 14 * kStride;   // ... the same with a blank as the last of the run
constexpr unsigned kOverflow = 22 * kStride;
constexpr unsigned kSeldom = 23 * kStride;

struct Step {
  unsigned next;
  bool keeps;
};

constexpr Step stepOf(unsigned state, unsigned kind) {
  const bool isRun = state >= kRun;
  const bool isBlankLast = state >= kRunBlank;
  const unsigned length = isRun ? (state - kRun) % (8 * kStride) + kStride : 0;
  const bool isLongest = length == 8 * kStride;
  switch (kind) {
    case kOrdinary: return {kText, true};
    case kMark:
      if (state == kStart) return {kText, true};
      if (state == kLong || state == kLongBlank) return {state, false};
      return {isLongest ? kOverflow : kRun + length, true};
    case kBlank:
      if (isRun) return {isLongest ? kOverflow : kRunBlank + length, !isBlankLast};
      if (state == kText || state == kAfterBlank) return {kBlanks, true};
      return {state, false};
    case kShape:
      if (isRun) return {isBlankLast ? kAfterBlank : kText, false};
      return {state == kLong ? kText : state == kLongBlank ? kAfterBlank : state, false};
    default: return {kSeldom, false};
  }
}

// Two tables, since the next state is what the character after it waits for.
struct Steps {
  std::array<Byte, kOverflow> next{};
  std::array<Byte, kOverflow> keeps{};  // all bits, or none
};

constexpr auto kSteps = [] {
  Steps steps;
  for (unsigned i = 0; i < kOverflow; ++i) {
    if (i % kStride >= kKinds) continue;
    const Step step = stepOf(i - i % kStride, i % kStride);
    steps.next[i] = static_cast<Byte>(step.next);
    steps.keeps[i] = step.keeps ? 0xFF : 0;
  }
  return steps;
}();

class TrimStage : public Stage {
 public:
  std::size_t apply(std::string_view text, bool ended, Buffer& out) override {
    begin_ = out.room(text.size() + pending_.size());
    to_ = begin_ + pending_.view().copy(begin_, pending_.size());
    pending_.clear();
    const char* p = run(text.data(), text.data() + text.size(), ended);
    if (state_ >= kRun && !ended) {
      p = run_.begin;
      to_ = run_.to;
      state_ = run_.state;
    }
    // Whether they are written depends on what follows.
    const char* const end = to_;
    takeBackBlanks();
    if (!ended) pending_.append({to_, static_cast<std::size_t>(end - to_)});
    out.setEnd(to_);
    return static_cast<std::size_t>(p - text.data());
  }

 private:
  // Where a run of punctuation began, should it prove too long.
  struct Run {
    const char* begin;
    char* to;
    std::size_t state;
  };

  // Returns where it stopped: behind a carriage return, it must be seen what follows.
  const char* run(const char* p, const char* end, bool ended) {
    const Kind* const kinds = kinds_.of.data();
    char* to = to_;
    std::size_t state = state_;
    Run run = run_;
    // False where it takes more than a look at the table.
    const auto take = [&](const char* at, Kind kind, gchar_t unit, unsigned size) {
      const std::size_t step = state + kind;
      const std::size_t next = kSteps.next[step];
      if (next >= kOverflow) [[unlikely]]
        return false;
      // Less work than to write it down each time, and no jump.
      const bool isRun = next == kRun;
      run.begin = isRun ? at : run.begin;
      run.to = isRun ? to : run.to;
      run.state = isRun ? state : run.state;
      storeUnit(to, unit);
      to += size & kSteps.keeps[step];
      state = next;
      return true;
    };
    while (p != end) {
      if (end - p > kBlockBytes && isAllAscii(loadBlock(bytesOf(p)))) {
        // Pages are indented: a quarter of them is such blanks.
        if (*p == ' ' && kSteps.keeps[state + kBlank] == 0 && state < kLong &&
            loadBlock(bytesOf(p)) == inEveryByte(' ')) {
          p += kBlockBytes;
          continue;
        }
        // Where the next one begins is known before what this one is.
        const char* const blockEnd = p + kBlockBytes;
        while (p != blockEnd && take(p, kinds[static_cast<Byte>(*p)], static_cast<Byte>(*p), 1))
          ++p;
        if (p == blockEnd) continue;
      } else {
        // Every buffer has a byte after its end.
        const gchar_t unit = loadUnit(bytesOf(p));
        const bool isPair = (unit & 0x80) != 0;
        const unsigned size = isPair ? 2 : 1;
        if (take(p, kinds[isPair ? unit : unit & 0x7F], unit, size)) {
          p += size;
          continue;
        }
      }
      to_ = to;
      state_ = state;
      run_ = run;
      const bool isOverflow = kSteps.next[state + kindAt(p)] == kOverflow;
      const char* const next = isOverflow ? dropRun(p + sizeAt(p)) : takeRare(p, end, ended);
      to = to_;
      state = state_;
      if (next == nullptr) break;
      p = next;
    }
    to_ = to;
    state_ = state;
    run_ = run;
    return p;
  }

  // Of a run that is too long its first mark stays, or nothing after a blank.
  const char* dropRun(const char* next) {
    const bool isAfterBlank = run_.state == kBlanks || run_.state == kAfterBlank;
    to_ = isAfterBlank ? run_.to : std::copy_n(run_.begin, sizeAt(run_.begin), run_.to);
    state_ = isAfterBlank ? kLongBlank : kLong;
    return next;
  }

  const char* takeRare(const char* p, const char* end, bool ended) {
    if (*p == '\r' && p + 1 == end && !ended) return nullptr;
    if (*p == '\n' || (*p == '\r' && (p + 1 == end || p[1] == '\n'))) {
      takeBackBlanks();
      *to_++ = *p;
      state_ = kStart;
    } else if (!isAscii(static_cast<Byte>(*p))) {
      to_ = std::copy_n(p, 4, to_);
      state_ = kText;
      return p + 4;
    } else if (*p == '\0') {
      return p + 1;
    } else if (*p != '\r') {
      takeBlank(' ');
    } else if (state_ != kStart) {
      // A line end within the line: it stands for all blanks around it.
      if (state_ == kBlanks) to_ -= to_[-1] == '\xA1' ? 2 : 1;
      *to_++ = '\r';
      state_ = kBlanks;
    }
    return p + 1;
  }

  void takeBlank(char c) {
    const std::size_t step = state_ + kBlank;
    if (kSteps.next[step] == kOverflow) {
      dropRun(nullptr);
      return;
    }
    *to_ = c;
    to_ += 1 & kSteps.keeps[step];
    state_ = kSteps.next[step];
  }

  void takeBackBlanks() {
    while (to_ != begin_) {
      const char last = to_[-1];
      const bool isWide = last == '\xA1' && to_ - begin_ >= 2 && to_[-2] == '\xA1';
      if (!isWide && last != ' ' && last != '\t' && (last != '\r' || state_ == kStart)) break;
      to_ -= isWide ? 2 : 1;
    }
  }

  Kind kindAt(const char* p) const {
    return kinds_.of[sizeAt(p) == 2 ? loadUnit(bytesOf(p)) : static_cast<Byte>(*p)];
  }
  static unsigned sizeAt(const char* p) { return isAscii(static_cast<Byte>(*p)) ? 1 : 2; }

  const Kinds& kinds_ = madeOnce<Kinds>();
  std::size_t state_ = kStart;
  Run run_ = {};
  char* begin_ = nullptr;
  char* to_ = nullptr;
  Buffer pending_;  // blanks; a dropped run between two of them leaves both
};

}  // namespace

std::unique_ptr<Stage> makeTrimStage() { return std::make_unique<TrimStage>(); }

}  // namespace sgbk::text
