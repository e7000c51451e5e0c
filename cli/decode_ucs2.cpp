// UCS-2 in either byte order.

#include <algorithm>
#include <vector>

#include "decoder.h"
#include "library_call.h"

namespace cli {
namespace {

using Unit = unsigned short;

constexpr gchar_t kUnmapped = 0x3F3F;
constexpr Unit kByteOrderMark = 0xFEFF;

bool isHighSurrogate(Unit u) { return (u & 0xFC00) == 0xD800; }
bool isLowSurrogate(Unit u) { return (u & 0xFC00) == 0xDC00; }
bool isSurrogate(Unit u) { return (u & 0xF800) == 0xD800; }

class Ucs2Decoder : public Decoder {
 public:
  Ucs2Decoder(EncodingConvertor& converter, Source source, Form form)
      : converter_(converter), isLittleEndian_(source == Source::ucs2le), form_(form) {}

  std::size_t decode(std::string_view in, bool ended, std::string& out,
                     LossReport& losses) override {
    load(in);
    // The two halves of a pair are one loss.
    if (!ended && !units_.empty() && isHighSurrogate(units_.back())) units_.pop_back();
    convert(out, losses);
    const std::size_t used = 2 * units_.size();
    if (!ended || in.size() % 2 == 0) return used;
    losses.addCharacters(1);
    losses.add(Reason::malformed, used, 1);
    return in.size();
  }

 private:
  void load(std::string_view in) {
    units_.resize(in.size() / 2);
    if (!units_.empty()) std::memcpy(units_.data(), in.data(), 2 * units_.size());
    if (isLittleEndian_) return;
    for (Unit& unit : units_) unit = static_cast<Unit>(unit << 8 | unit >> 8);
  }

  // In blocks, since the losses are looked for in the blocks that have any.
  void convert(std::string& out, LossReport& losses) const {
    constexpr std::size_t kBlock = 1024;
    for (std::size_t begin = 0; begin != units_.size();) {
      std::size_t end = std::min(begin + kBlock, units_.size());
      if (end != units_.size() && isHighSurrogate(units_[end - 1])) ++end;
      if (!convertBlock(begin, end, out)) findLosses(begin, end, losses);
      begin = end;
    }
    losses.addCharacters(units_.size());
  }

  // Whether all of it was written.
  bool convertBlock(std::size_t from, std::size_t to, std::string& out) const {
    const bool isWide = form_ == Form::wide;
    std::size_t ascii = 0;
    std::size_t marks = 0;
    for (std::size_t i = from; i != to; ++i) {
      ascii += units_[i] < 0x80;
      marks += units_[i] == kByteOrderMark;
    }
    const std::size_t expected = 2 * (to - from - marks) - (isWide ? 0 : ascii);
    const std::size_t begin = out.size();
    out.resize(begin + 2 * (to - from));
    const auto call = isWide ? &EncodingConvertor::uc2sgbk_DB : &EncodingConvertor::uc2sgbk;
    const int written = (converter_.*call)(units_.data() + from, static_cast<int>(to - from),
                                           out.data() + begin, static_cast<int>(2 * (to - from)));
    out.resize(begin + static_cast<std::size_t>(written));
    return static_cast<std::size_t>(written) == expected;
  }

  void findLosses(std::size_t from, std::size_t to, LossReport& losses) const {
    for (std::size_t i = from; i < to; ++i) {
      const Unit unit = units_[i];
      if (isSurrogate(unit)) {
        const bool isPair = isHighSurrogate(unit) && i + 1 < to && isLowSurrogate(units_[i + 1]);
        losses.add(isPair ? Reason::undefined : Reason::malformed, 2 * i, isPair ? 4 : 2);
        i += isPair;
        losses.addCharacters(isPair ? static_cast<std::size_t>(-1) : 0);
      } else if (unit != kByteOrderMark && converter_.getucgvalue(unit) == kUnmapped) {
        losses.add(Reason::undefined, 2 * i, 2);
      }
    }
  }

  EncodingConvertor& converter_;
  const bool isLittleEndian_;
  const Form form_;
  std::vector<Unit> units_;
};

}  // namespace

std::unique_ptr<Decoder> makeUcs2Decoder(EncodingConvertor& converter, Source source, Form form) {
  return std::make_unique<Ucs2Decoder>(converter, source, form);
}

}  // namespace cli
