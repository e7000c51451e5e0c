#include <array>

#include "code_points.h"
#include "library_tables.h"
#include "made_once.h"
#include "stage.h"

namespace sgbk::text {
namespace {

enum class Class : Byte { ordinary, mark, blank, shape, lineEnd, nul };

struct Classes {
  std::array<Class, 0x10000> ofUnit{};
  std::array<Class, 0x80> ofAscii{};

  Classes() {
    for (unsigned i = 0; i < ofUnit.size(); ++i) ofUnit[i] = classOf(static_cast<gchar_t>(i));
    for (unsigned c = 0; c < ofAscii.size(); ++c) ofAscii[c] = ofUnit[libraryTables().widened[c]];
  }

  static Class classOf(gchar_t unit) {
    if (unit == 0) return Class::nul;
    if (unit == RETURN_CONVERSION_CHAR) return Class::lineEnd;
    if (isgcharspace(unit)) return Class::blank;
    if (isShapeChar(unit)) return Class::shape;
    return isGraphChar(unit) ? Class::mark : Class::ordinary;
  }
};

const Classes& classes() {
  static std::atomic<const Classes*> slot;
  return madeOnce(slot);
}

// A longer run of punctuation marks is decoration.
constexpr int kLongestRun = 8;

// What a line has come to.
struct State {
  bool isStarted = false;    // it has a character
  bool isInBlanks = false;   // within a run of blanks, and of shapes among them
  bool isInLongRun = false;  // within a run of marks of which all has been written
  // Blanks that are written if anything follows: one at the end of a run of marks, one after it.
  unsigned pendingSize = 0;
  char pending[4] = {};
};

// One pass over a text. The state is its own while it lasts, which keeps it in registers.
class Pass {
 public:
  Pass(const State& state, std::string_view text, bool ended, char* to)
      : state_(state), end_(text.data() + text.size()), ended_(ended), to_(to) {}

  // Returns where it stopped: what follows depends on text still to come.
  const char* run(const char* p) {
    while (p != end_) {
      const char* const next = take(p);
      if (next == nullptr) break;
      p = next;
    }
    return p;
  }

  const State& state() const { return state_; }
  char* written() const { return to_; }

 private:
  struct Character {
    Class kind;
    unsigned size;
  };

  Character at(const char* p) const {
    const Byte* const b = bytesOf(p);
    if (isAscii(*b)) return {classes_.ofAscii[*b], 1};
    if (isFourBytesDigit(b[1])) return {Class::ordinary, 4};
    return {classes_.ofUnit[loadUnit(b)], 2};
  }

  // Takes one character, or a run of them. Returns where it ends, null when more has to be seen.
  [[gnu::always_inline]] const char* take(const char* p) {
    const Character c = at(p);
    if (c.kind == Class::ordinary) return takeOrdinary(p, c);
    if (c.kind == Class::nul) return p + c.size;
    const bool isMarkOrBlank = c.kind == Class::mark || c.kind == Class::blank;
    if (state_.isInLongRun && isMarkOrBlank) return p + c.size;
    state_.isInLongRun = false;
    if (c.kind == Class::mark && state_.isStarted) return takeRun(p, c);
    if (c.kind == Class::lineEnd) return takeLineEnd(p);
    if (c.kind == Class::blank) addBlank(p, c.size);
    if (c.kind == Class::mark) {
      // The first character stays, and is part of no run.
      put(p, c.size);
      state_.isStarted = true;
    }
    return p + c.size;
  }

  [[gnu::always_inline]] const char* takeOrdinary(const char* p, Character c) {
    put(state_.pending, state_.pendingSize);
    state_ = State{.isStarted = true};
    do {
      put(p, c.size);
      p += c.size;
    } while (p != end_ && (c = at(p)).kind == Class::ordinary);
    return p;
  }

  // Punctuation marks, with blanks among them. They are written before it is known whether they
  // are too many.
  [[gnu::always_inline]] const char* takeRun(const char* const begin, Character c) {
    const char* p = begin;
    const unsigned firstSize = c.size;
    char* const start = to_;
    put(state_.pending, state_.pendingSize);
    char* marksEnd = to_;
    int length = 0;
    for (;;) {
      if (c.kind == Class::mark) {
        put(p, c.size);
        marksEnd = to_;
      } else if (c.kind == Class::blank && to_ == marksEnd) {
        to_ = writeBlank(to_, p, c.size);
      }
      length += c.kind != Class::nul;
      p += c.size;
      if (length > kLongestRun) {
        to_ = start + (state_.pendingSize == 0 ? firstSize : 0);
        state_.isInLongRun = true;
        state_.isInBlanks = false;
        return p;
      }
      if (p == end_) {
        if (ended_) break;
        to_ = start;
        return nullptr;
      }
      c = at(p);
      if (c.kind != Class::mark && c.kind != Class::blank && c.kind != Class::nul) break;
    }
    state_ = State{.isStarted = true, .pendingSize = static_cast<unsigned>(to_ - marksEnd)};
    for (unsigned i = 0; i < state_.pendingSize; ++i) state_.pending[i] = marksEnd[i];
    to_ = marksEnd;
    return p;
  }

  // A carriage return before the line feed belongs to the line end, any other one is a blank.
  const char* takeLineEnd(const char* p) {
    const bool isReturn = *p == '\r';
    if (isReturn && p + 1 == end_ && !ended_) return nullptr;
    if (isReturn && p + 1 != end_ && p[1] != '\n') {
      addBlank(p, 1);
      if (state_.isStarted) {
        state_.pendingSize -= state_.pending[state_.pendingSize - 1] == '\xA1' ? 2 : 1;
        state_.pending[state_.pendingSize++] = '\r';
      }
    } else {
      state_ = State();
      put(p, 1);
    }
    return p + 1;
  }

  [[gnu::always_inline]] void put(const char* p, unsigned size) {
    for (unsigned i = 0; i < size; ++i) to_[i] = p[i];
    to_ += size;
  }

  static char* writeBlank(char* to, const char* p, unsigned size) {
    *to++ = size == 2 ? '\xA1' : *p == '\t' ? '\t' : ' ';
    if (size == 2) *to++ = '\xA1';
    return to;
  }

  // The first of a run of blanks stands for all, if anything follows in the line.
  void addBlank(const char* p, unsigned size) {
    if (!state_.isStarted || state_.isInBlanks) return;
    writeBlank(state_.pending + state_.pendingSize, p, size);
    state_.pendingSize += size;
    state_.isInBlanks = true;
  }

  const Classes& classes_ = classes();
  State state_;
  const char* const end_;
  const bool ended_;
  char* to_;
};

class TrimStage : public Stage {
 public:
  std::size_t apply(std::string_view text, bool ended, Buffer& out) override {
    // Nothing becomes longer, but for blanks that were held.
    Pass pass(state_, text, ended, out.room(text.size() + 2 * sizeof state_.pending));
    const char* const end = pass.run(text.data());
    out.setEnd(pass.written());
    state_ = ended ? State() : pass.state();
    return static_cast<std::size_t>(end - text.data());
  }

  void reset() override { state_ = State(); }

 private:
  State state_;
};

}  // namespace

std::unique_ptr<Stage> makeTrimStage() { return std::make_unique<TrimStage>(); }

}  // namespace sgbk::text
