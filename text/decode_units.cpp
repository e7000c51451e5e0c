// UCS-2 in either byte order, with the surrogates of UTF-16.

#include "core/vectors.h"
#include "decoding_loop.h"

namespace sgbk::text {
namespace {

using Unit = std::uint16_t;

constexpr bool isHighSurrogate(Unit u) { return (u & 0xFC00) == 0xD800; }
constexpr bool isLowSurrogate(Unit u) { return (u & 0xFC00) == 0xDC00; }

template <bool isBigEndian>
class UnitDecoder : public DecodingLoop<UnitDecoder<isBigEndian>> {
 public:
  using DecodingLoop<UnitDecoder>::DecodingLoop;

  static constexpr int kUnit = 2;

  // All of it is ASCII, or none passes for it.
  static Block blockAt(const Byte* p, const Byte* end) {
    if (end - p < kUnit * kBlockUnits) return inEveryByte(0x80);
    Units units = sgbk::load<Units>(p);
    if (isBigEndian) units = units << 8 | units >> 8;
    return everyBit(within(units, 0, 0x7F)) ? lowBytes(units) : inEveryByte(0x80);
  }

  static std::string_view textAt(const Byte* p, std::size_t left, char* ascii) {
    std::size_t size = 0;
    for (; size < std::min(left / kUnit, kLongestReference) && load(p) < 0x80; p += kUnit) {
      ascii[size++] = static_cast<char>(load(p));
    }
    return {ascii, size};
  }

  template <bool references>
  const Byte* takeRun(const Byte* p, const Byte* end, char*& out) {
    const Byte* const blockEnd = end - p > 2 * kBlockBytes ? p + 2 * kBlockBytes : end;
    return this->template takeEntries<kUnit>(p, blockEnd, out, [](const Byte* at) {
      return references && load(at) == '&' ? Decoder::kNone : load(at);
    });
  }

  std::size_t takeOther(const Byte* p, std::size_t left, bool ended) {
    if (left < 2) return ended ? this->putMalformed(p, 1) : 0;
    const Unit unit = load(p);
    if (isHighSurrogate(unit)) {
      if (left < 4 && !ended) return 0;
      if (left >= 4 && isLowSurrogate(load(p + 2))) {
        const CodePoint c = 0x10000 + ((unit & 0x3FFu) << 10 | (load(p + 2) & 0x3FFu));
        this->putCodePoint(c, p, 4, c);
        return 4;
      }
    }
    this->put(this->entries_[unit], p, 2, isSurrogate(unit) ? kNoCodePoint : unit);
    return 2;
  }

 private:
  static Unit load(const Byte* p) {
    return static_cast<Unit>(isBigEndian ? p[0] << 8 | p[1] : loadUnit(p));
  }
};

}  // namespace

std::unique_ptr<Decoder> makeUnitDecoder(const Decoder::Surroundings& around, bool isBigEndian) {
  if (isBigEndian) return std::make_unique<UnitDecoder<true>>(around);
  return std::make_unique<UnitDecoder<false>>(around);
}

}  // namespace sgbk::text
