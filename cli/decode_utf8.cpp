// UTF-8. Well-formed text of up to three bytes a character goes to the library in long runs.
// Damaged text goes to it step by step, a step being what it takes at once.
//
// A well-formed sequence of four bytes is dropped here: the library does not know the form and
// would make two wrong characters of it.

#include "decoder.h"
#include "library_call.h"

namespace cli {
namespace {

// Text after which the library has seen ASCII, and which takes nothing of what follows.
constexpr std::string_view kAsciiSeen = "a\xE4\xB8\x80";
constexpr gchar_t kUnmapped = 0x3F3F;
constexpr unsigned kByteOrderMark = 0xFEFF;
// No decision needs to see more than this.
constexpr std::size_t kLongestStep = 6;

bool isContinuation(Byte b) { return (b & 0xC0) == 0x80; }
bool isTwoByteLead(Byte b) { return (b & 0xE0) == 0xC0; }
bool isThreeByteLead(Byte b) { return (b & 0xF0) == 0xE0; }

bool isWellFormed2(const Byte* p, std::size_t left) {
  return p[0] >= 0xC2 && isTwoByteLead(p[0]) && left >= 2 && isContinuation(p[1]);
}

bool isThreeByteGroup(const Byte* p, std::size_t left) {
  return left >= 3 && isThreeByteLead(p[0]) && isContinuation(p[1]) && isContinuation(p[2]);
}

bool isWellFormed3(const Byte* p, std::size_t left) {
  return isThreeByteGroup(p, left) && !(p[0] == 0xE0 && p[1] < 0xA0) &&
         !(p[0] == 0xED && p[1] >= 0xA0);
}

bool isWellFormed4(const Byte* p, std::size_t left) {
  return left >= 4 && p[0] >= 0xF0 && p[0] <= 0xF4 && isContinuation(p[1]) &&
         isContinuation(p[2]) && isContinuation(p[3]) && !(p[0] == 0xF0 && p[1] < 0x90) &&
         !(p[0] == 0xF4 && p[1] >= 0x90);
}

// A surrogate pair whose halves were encoded one by one, as Java and Oracle do.
bool isSurrogatePair(const Byte* p, std::size_t left) {
  return left >= 6 && isThreeByteGroup(p, 3) && isThreeByteGroup(p + 3, 3) && p[0] == 0xED &&
         p[1] >= 0xA0 && p[1] < 0xB0 && p[3] == 0xED && p[4] >= 0xB0;
}

unsigned codePointOf(const Byte* p) {
  if (isTwoByteLead(p[0])) return (p[0] & 0x1Fu) << 6 | (p[1] & 0x3Fu);
  return (p[0] & 0x0Fu) << 12 | (p[1] & 0x3Fu) << 6 | (p[2] & 0x3Fu);
}

class Utf8Decoder : public Decoder {
 public:
  Utf8Decoder(EncodingConvertor& converter, Form form) : converter_(converter), form_(form) {
    std::string units;
    appendConverted(converter_, &EncodingConvertor::utf82sgbk, kAsciiSeen, units);
    seenSize_ = units.size();
  }

  std::size_t decode(std::string_view in, bool ended, std::string& out,
                     LossReport& losses) override {
    begin_ = bytesOf(in);
    end_ = begin_ + in.size();
    ended_ = ended;
    const Byte* p = begin_;
    while (p != end_) {
      const Byte* q = takeAscii(p, out, losses);
      if (q == p) q = takeWellFormed(p, out, losses);
      if (q == p) q = takeOther(p, out, losses);
      if (q == p) break;
      p = q;
    }
    return static_cast<std::size_t>(p - begin_);
  }

 private:
  // Each of these returns where it stopped: at `p` when what stands there is not its own, or when
  // more has to come first.

  const Byte* takeAscii(const Byte* p, std::string& out, LossReport& losses) {
    const Byte* run = skipAscii(p, end_);
    if (run == p) return p;
    // The last byte leads a damaged group when two continuation bytes follow it.
    if (!endsLine(run[-1])) {
      const std::size_t seen = std::min<std::size_t>(left(run), 2);
      const bool mayLead = (seen < 1 || isContinuation(run[0])) &&
                           (seen < 2 || isContinuation(run[1])) && (seen == 2 || !ended_);
      if (mayLead) --run;
    }
    if (run == p) return p;
    if (form_ == Form::lines) {
      out.append(viewOf(p, run));
    } else {
      appendConverted(converter_, &EncodingConvertor::utf82sgbk, viewOf(p, run), out);
    }
    losses.addCharacters(left(p) - left(run));
    asciiSeen_ = !endsLine(run[-1]);
    return run;
  }

  const Byte* takeWellFormed(const Byte* p, std::string& out, LossReport& losses) {
    const Byte* run = p;
    std::size_t characters = 0;
    for (;; ++characters) {
      const std::size_t left = this->left(run);
      if (isWellFormed3(run, left)) {
        run += 3;
      } else if (left != 0 && isWellFormed2(run, left)) {
        run += 2;
      } else {
        break;
      }
    }
    if (run == p) return p;
    const std::size_t begin =
        appendConverted(converter_, &EncodingConvertor::utf82sgbk, viewOf(p, run), out);
    losses.addCharacters(characters);
    if (out.size() - begin != 2 * characters) findUndefined(p, run, losses);
    return run;
  }

  void findUndefined(const Byte* p, const Byte* end, LossReport& losses) {
    while (p != end) {
      const std::size_t size = isTwoByteLead(*p) ? 2 : 3;
      const unsigned codePoint = codePointOf(p);
      if (codePoint != kByteOrderMark &&
          converter_.getucgvalue(static_cast<unsigned short>(codePoint)) == kUnmapped) {
        losses.add(Reason::undefined, at(p), size);
      }
      p += size;
    }
  }

  const Byte* takeOther(const Byte* p, std::string& out, LossReport& losses) {
    // A line is all there is where lines are kept.
    const Byte* end = end_;
    bool ended = ended_;
    if (form_ == Form::lines) {
      const std::size_t behind =
          viewOf(p, p + std::min(left(p), kLongestStep)).find_first_of("\r\n");
      if (behind != std::string_view::npos) {
        end = p + behind;
        ended = true;
      }
    }
    const auto left = static_cast<std::size_t>(end - p);
    if (left < kLongestStep && !ended) return p;
    losses.addCharacters(1);
    if (isWellFormed4(p, left) || isSurrogatePair(p, left)) {
      const std::size_t size = isWellFormed4(p, left) ? 4 : 6;
      losses.add(Reason::undefined, at(p), size);
      return p + size;
    }
    const std::size_t size = stepSize(p, left);
    losses.add(Reason::malformed, at(p), size);
    std::string step(asciiSeen_ ? kAsciiSeen : std::string_view());
    step.append(viewOf(p, p + size));
    const std::size_t begin = appendConverted(converter_, &EncodingConvertor::utf82sgbk, step, out);
    if (asciiSeen_) out.erase(begin, seenSize_);
    if (form_ == Form::lines) makeText(out, begin);
    asciiSeen_ = asciiSeen_ || isAscii(*p);
    return p + size;
  }

  // How much the library takes at once of text that is not well-formed, `left` bytes of which are
  // there.
  static std::size_t stepSize(const Byte* p, std::size_t left) {
    if (isTwoByteLead(*p)) return std::min<std::size_t>(left, 2);
    if (isThreeByteLead(*p)) {
      const bool isCutOff = left >= 5 && isContinuation(p[1]) && isThreeByteGroup(p + 2, 3);
      return isCutOff ? 5 : std::min<std::size_t>(left, 3);
    }
    return left >= 3 && isContinuation(p[1]) && isContinuation(p[2]) ? 3 : 1;
  }

  // Overlong forms of ASCII come out widened, control characters as codes that are no characters.
  static void makeText(std::string& out, std::size_t begin) {
    if (out.size() != begin && unitAt(out.data() + begin) != kUnmapped) blankUndefined(out, begin);
  }

  bool endsLine(Byte b) const { return form_ == Form::lines && isLineEnd(b); }
  std::size_t left(const Byte* p) const { return static_cast<std::size_t>(end_ - p); }
  std::size_t at(const Byte* p) const { return static_cast<std::size_t>(p - begin_); }

  EncodingConvertor& converter_;
  const Form form_;
  std::size_t seenSize_;    // of the library's text for kAsciiSeen
  bool asciiSeen_ = false;  // in this line, or in the whole input
  const Byte* begin_ = nullptr;
  const Byte* end_ = nullptr;
  bool ended_ = false;
};

}  // namespace

std::unique_ptr<Decoder> makeUtf8Decoder(EncodingConvertor& converter, Form form) {
  return std::make_unique<Utf8Decoder>(converter, form);
}

}  // namespace cli
