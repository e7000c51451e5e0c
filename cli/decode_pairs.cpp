// Big5 and GBK: one byte or two.

#include "decoder.h"
#include "library_call.h"

namespace cli {
namespace {

// U+FEFF in the four bytes of GB18030.
constexpr std::string_view kGb18030Mark = "\x84\x31\x95\x33";

class PairDecoder : public Decoder {
 public:
  PairDecoder(EncodingConvertor& converter, Source source, Form form, bool simplify)
      : converter_(converter),
        conversion_(source == Source::big5 ? &EncodingConvertor::b52sgbk
                                           : &EncodingConvertor::t2sgbk),
        form_(form),
        isGbk_(source == Source::gbk),
        simplify_(simplify),
        blank_(isGbk_ ? CHINESE_SPACE_CHAR : unitOf(0xA1, 0x40)) {}

  std::size_t decode(std::string_view in, bool ended, std::string& out,
                     LossReport& losses) override {
    begin_ = bytesOf(in);
    const Byte* const end = begin_ + in.size();
    const Byte* p = begin_;
    while (p != end) {
      if (const Byte* const run = skipAscii(p, end); run != p) {
        takeAscii(viewOf(p, run), out, losses);
        p = run;
        continue;
      }
      const Byte* run = p;
      while (end - run >= 2 && isLead(run[0]) && run[1] >= 0x40) run += 2;
      if (run != p) {
        takePairs(p, run, out, losses);
        p = run;
        continue;
      }
      const std::size_t taken = takeBroken(p, end, ended, out, losses);
      if (taken == 0) break;
      p += taken;
    }
    return static_cast<std::size_t>(p - begin_);
  }

 private:
  void takeAscii(std::string_view run, std::string& out, LossReport& losses) {
    if (form_ == Form::lines) {
      out.append(run);
    } else {
      appendConverted(converter_, conversion_, run, out);
    }
    losses.addCharacters(run.size());
  }

  void takePairs(const Byte* p, const Byte* end, std::string& out, LossReport& losses) {
    const std::size_t begin = out.size();
    if (simplify_) {
      appendConverted(converter_, conversion_, viewOf(p, end), out);
    } else {
      out.append(viewOf(p, end));
      blankUndefined(out, begin);
    }
    losses.addCharacters(static_cast<std::size_t>(end - p) / 2);
    for (const char* unit = out.data() + begin; p != end; p += 2, unit += 2) {
      if (unitAt(unit) == CHINESE_SPACE_CHAR && unitAt(p) != blank_) {
        losses.add(isWellFormed(p) ? Reason::undefined : Reason::malformed, at(p), 2);
      }
    }
  }

  // What is no pair with a trail byte of 40 and more. Returns the bytes used, 0 when more have to
  // come first.
  std::size_t takeBroken(const Byte* p, const Byte* end, bool ended, std::string& out,
                         LossReport& losses) {
    const auto left = static_cast<std::size_t>(end - p);
    if (isLead(*p) && left < 2 && !ended) return 0;
    if (isGbk_ && mayBeFourBytes(p, std::min<std::size_t>(left, 4))) {
      if (left < 4 && !ended) return 0;
      if (left >= 4) return takeFourBytes(p, out, losses);
    }
    // A line end is never a trail byte where lines are kept.
    const bool isAlone = !isLead(*p) || left < 2 || (form_ == Form::lines && isLineEnd(p[1]));
    const std::size_t size = isAlone ? 1 : 2;
    if (!isAlone) appendConverted(converter_, conversion_, viewOf(p, p + 2), out);
    losses.addCharacters(1);
    losses.add(Reason::malformed, at(p), size);
    return size;
  }

  // A character beyond the two-byte area of GB18030. To the library it is two pairs.
  std::size_t takeFourBytes(const Byte* p, std::string& out, LossReport& losses) {
    const bool isMark = viewOf(p, p + 4) == kGb18030Mark;
    if (!isMark || form_ == Form::wide) {
      appendConverted(converter_, conversion_, viewOf(p, p + 4), out);
    }
    losses.addCharacters(1);
    if (!isMark) losses.add(Reason::undefined, at(p), 4);
    return 4;
  }

  static bool mayBeFourBytes(const Byte* p, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
      if (i % 2 == 0 ? !isLead(p[i]) : p[i] < '0' || p[i] > '9') return false;
    }
    return true;
  }

  bool isWellFormed(const Byte* p) const {
    return isTrail(p[1]) && (isGbk_ || p[1] <= 0x7E || p[1] >= 0xA1);
  }

  std::size_t at(const Byte* p) const { return static_cast<std::size_t>(p - begin_); }

  EncodingConvertor& converter_;
  const StreamConversion conversion_;
  const Form form_;
  const bool isGbk_;
  const bool simplify_;
  const gchar_t blank_;
  const Byte* begin_ = nullptr;
};

}  // namespace

std::unique_ptr<Decoder> makePairDecoder(EncodingConvertor& converter, Source source, Form form,
                                         bool simplify) {
  return std::make_unique<PairDecoder>(converter, source, form, simplify);
}

}  // namespace cli
