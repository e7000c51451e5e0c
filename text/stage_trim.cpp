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

class TrimStage : public Stage {
 public:
  void apply(std::string_view text, bool ended, Buffer& out) override {
    const char* p = text.data();
    const char* const end = p + text.size();
    while (p != end) p = take(p, end, out);
    if (ended) endLine(out);
  }

  void reset() override {
    run_.clear();
    runLength_ = firstOfRun_ = marksEnd_ = 0;
    pending_.clear();
    hasReturn_ = isStarted_ = isInBlanks_ = false;
  }

 private:
  // A longer run of punctuation marks is decoration.
  static constexpr std::size_t kLongestRun = 8;

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

  // Takes one character, or as many ordinary ones as there are; returns where they end.
  const char* take(const char* p, const char* end, Buffer& out) {
    if (*p == '\n') {
      endLine(out);
      out.append('\n');
      return p + 1;
    }
    if (hasReturn_) {
      hasReturn_ = false;
      take(Class::lineEnd, "\r", out);
    }
    if (*p == '\r') {
      // Before a line feed it belongs to the line end.
      hasReturn_ = true;
      return p + 1;
    }
    Character c = at(p);
    if (c.kind != Class::ordinary) {
      take(c.kind, {p, c.size}, out);
      return p + c.size;
    }
    endRun(out);
    putPending(out);
    const char* const begin = p;
    do {
      p += c.size;
    } while (p != end && *p != '\r' && *p != '\n' && (c = at(p)).kind == Class::ordinary);
    out.append({begin, p});
    isStarted_ = true;
    isInBlanks_ = false;
    return p;
  }

  // Takes a character that is not ordinary.
  void take(Class kind, std::string_view bytes, Buffer& out) {
    if (kind == Class::nul) return;
    if (runLength_ != 0) {
      if (kind == Class::mark || kind == Class::blank) return extendRun(kind, bytes, out);
      endRun(out);
    }
    if (kind == Class::mark) {
      isInBlanks_ = false;
      if (isStarted_) return extendRun(kind, bytes, out);
      // The first character stays, and is part of no run.
      out.append(bytes);
      isStarted_ = true;
    } else if (isStarted_ && kind != Class::shape) {
      if (!isInBlanks_) pending_.append(blankFor(bytes));
      isInBlanks_ = true;
      if (kind == Class::lineEnd) endPendingWithReturn();
    }
  }

  void extendRun(Class kind, std::string_view bytes, Buffer& out) {
    ++runLength_;
    if (runLength_ <= kLongestRun) {
      // A run of blanks within it is one blank.
      if (kind == Class::mark) {
        run_.append(bytes);
        firstOfRun_ = firstOfRun_ == 0 ? run_.size() : firstOfRun_;
        marksEnd_ = run_.size();
      } else if (run_.size() == marksEnd_) {
        run_.append(blankFor(bytes));
      }
    } else if (runLength_ == kLongestRun + 1) {
      if (pending_.empty()) out.append(run_.view().substr(0, firstOfRun_));
      run_.clear();
    }
  }

  void endRun(Buffer& out) {
    if (runLength_ != 0 && runLength_ <= kLongestRun) {
      putPending(out);
      out.append(run_.view().substr(0, marksEnd_));
      pending_.append(run_.view().substr(marksEnd_));
    }
    run_.clear();
    runLength_ = firstOfRun_ = marksEnd_ = 0;
  }

  void putPending(Buffer& out) {
    out.append(pending_.view());
    pending_.clear();
  }

  void endLine(Buffer& out) {
    endRun(out);
    pending_.clear();
    if (hasReturn_) out.append('\r');
    hasReturn_ = isStarted_ = isInBlanks_ = false;
  }

  static std::string_view blankFor(std::string_view first) {
    return first.size() == 2 ? "\xA1\xA1" : first == "\t" ? "\t" : " ";
  }

  void endPendingWithReturn() {
    const std::size_t size = pending_.view().ends_with('\xA1') ? 2 : 1;
    pending_.cut(pending_.size() - size);
    pending_.append('\r');
  }

  const Classes& classes_ = classes();
  bool isStarted_ = false;   // the line has a character
  bool isInBlanks_ = false;  // within a run of blanks, and of shapes among them
  bool hasReturn_ = false;   // a carriage return came last
  Buffer pending_;           // blanks that are written if anything follows in the line
  Buffer run_;               // the marks of a run, as they would be written
  std::size_t runLength_ = 0;
  std::size_t firstOfRun_ = 0;  // where in run_ the first mark ends
  std::size_t marksEnd_ = 0;    // and the last one
};

}  // namespace

std::unique_ptr<Stage> makeTrimStage() { return std::make_unique<TrimStage>(); }

}  // namespace sgbk::text
