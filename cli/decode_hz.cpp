// HZ. In lines form a line starts in ASCII mode, whatever the one before left open.

#include "decoder.h"
#include "library_call.h"

namespace cli {
namespace {

constexpr std::string_view kOpen = "~{";

bool isGbByte(Byte b) { return b >= 0x21 && b <= 0x7E; }

class HzDecoder : public Decoder {
 public:
  HzDecoder(EncodingConvertor& converter, Form form, bool simplify)
      : converter_(converter), form_(form), simplify_(simplify) {}

  std::size_t decode(std::string_view in, bool ended, std::string& out,
                     LossReport& losses) override {
    begin_ = bytesOf(in);
    end_ = begin_ + in.size();
    ended_ = ended;
    const Byte* p = begin_;
    while (p != end_) {
      if (isGbMode_ && endsLine(*p)) isGbMode_ = false;
      const Byte* q = isGbMode_ ? takePairs(p, out, losses) : takeAscii(p, out, losses);
      if (q == p) q = takeOther(p, out, losses);
      if (q == p) break;
      p = q;
    }
    return static_cast<std::size_t>(p - begin_);
  }

 private:
  // Each of these returns where it stopped, as in the UTF-8 decoder.

  const Byte* takeAscii(const Byte* p, std::string& out, LossReport& losses) {
    const Byte* run = p;
    while (run != end_ && isAscii(*run) && *run != '~') ++run;
    emitAscii(viewOf(p, run), out);
    losses.addCharacters(static_cast<std::size_t>(run - p));
    return run;
  }

  void emitAscii(std::string_view run, std::string& out) {
    if (form_ == Form::lines) {
      out.append(run);
    } else {
      appendConverted(converter_, &EncodingConvertor::hz2sgbk, run, out);
    }
  }

  const Byte* takePairs(const Byte* p, std::string& out, LossReport& losses) {
    const Byte* run = p;
    while (end_ - run >= 2 && run[0] != '~' && !endsLine(run[0]) && !endsLine(run[1])) run += 2;
    if (run == p) return p;
    scratch_.assign(kOpen).append(viewOf(p, run));
    const std::size_t begin = appendConverted(
        converter_, simplify_ ? &EncodingConvertor::hz2sgbk : &EncodingConvertor::hzgb2gbk,
        scratch_, out);
    if (form_ == Form::lines) blankUndefined(out, begin);
    losses.addCharacters(static_cast<std::size_t>(run - p) / 2);
    const char* unit = out.data() + begin;
    for (const Byte* pair = p; pair != run; pair += 2, unit += 2) {
      if (!isGbByte(pair[0]) || !isGbByte(pair[1])) {
        losses.add(Reason::malformed, at(pair), 2);
      } else if (unitAt(unit) == CHINESE_SPACE_CHAR && !(pair[0] == 0x21 && pair[1] == 0x21)) {
        losses.add(Reason::undefined, at(pair), 2);
      }
    }
    return run;
  }

  // Escapes, and what does not belong into HZ.
  const Byte* takeOther(const Byte* p, std::string& out, LossReport& losses) {
    if (end_ - p < 2 && !ended_) return p;
    const bool isLast = end_ - p < 2 || endsLine(p[1]);
    if (*p == '~' && !isLast) {
      if (p[1] == (isGbMode_ ? '}' : '{')) {
        isGbMode_ = !isGbMode_;
        return p + 2;
      }
      if (!isGbMode_ && (p[1] == '~' || p[1] == '\n')) {
        emitAscii(form_ == Form::lines ? "~" : viewOf(p, p + 2), out);
        losses.addCharacters(1);
        return p + 2;
      }
    }
    // The tilde that joins two lines in HZ goes, but the line end stays: the library does so.
    if (*p == '~' && !isGbMode_ && end_ - p >= 2 && endsLine(p[1])) return p + 1;

    const std::size_t size = isLast || *p == 0x80 ? 1 : 2;
    losses.addCharacters(1);
    losses.add(Reason::malformed, at(p), size);
    if (isGbMode_) return p + size;
    const std::size_t begin =
        appendConverted(converter_, &EncodingConvertor::hz2sgbk, viewOf(p, p + size), out);
    if (form_ == Form::lines) blankUndefined(out, begin);
    return p + size;
  }

  bool endsLine(Byte b) const { return form_ == Form::lines && isLineEnd(b); }
  std::size_t at(const Byte* p) const { return static_cast<std::size_t>(p - begin_); }

  EncodingConvertor& converter_;
  const Form form_;
  const bool simplify_;
  bool isGbMode_ = false;
  std::string scratch_;
  const Byte* begin_ = nullptr;
  const Byte* end_ = nullptr;
  bool ended_ = false;
};

}  // namespace

std::unique_ptr<Decoder> makeHzDecoder(EncodingConvertor& converter, Form form, bool simplify) {
  return std::make_unique<HzDecoder>(converter, form, simplify);
}

}  // namespace cli
