// UCS-2 in either byte order, with the surrogates of UTF-16.

#include "byte_decoder.h"
#include "core/vectors.h"

namespace sgbk::text {
namespace {

using Unit = std::uint16_t;

constexpr bool isHighSurrogate(Unit u) { return (u & 0xFC00) == 0xD800; }
constexpr bool isLowSurrogate(Unit u) { return (u & 0xFC00) == 0xDC00; }

template <bool isBigEndian>
class UnitDecoder : public Decoder {
 public:
  using Decoder::Decoder;

  const Byte* decode(const Byte* p, const Byte* end, bool ended) override {
    p = dispatch(
        [&]<Ascii form, bool references>() { return run<form, references>(p, end, ended); });
    if (ended && end - p == 1) {
      putMalformed(p, 1);
      ++p;
    }
    return p;
  }

 private:
  static Unit load(const Byte* p) {
    return static_cast<Unit>(isBigEndian ? p[0] << 8 | p[1] : loadUnit(p));
  }

  template <Ascii form, bool references>
  const Byte* run(const Byte* p, const Byte* const end, bool ended) {
    char* out = roomFor(end - p);
    while (end - p >= 2) {
      if (const int count = takeAscii<form, references>(p, end, out); count != 0) {
        p += 2 * count;
        continue;
      }
      if (const Byte* const run = takeRun<references>(p, end, out); run != p) {
        p = run;
        continue;
      }
      out_->setEnd(out);
      const auto left = static_cast<std::size_t>(end - p) / 2;
      const std::size_t taken =
          references && load(p) == '&' ? reference(p, left, ended) : takeOther(p, left, ended);
      p += 2 * taken;
      out = roomFor(end - p);
      if (taken == 0) break;
    }
    out_->setEnd(out);
    return p;
  }

  // Eight units of ASCII at once. Fewer are taken one by one as all others are, without a jump that
  // depends on what they are.
  template <Ascii form, bool references>
  int takeAscii(const Byte* p, const Byte* end, char*& out) {
    if (end - p < 2 * kBlockUnits) return 0;
    Units units = sgbk::load<Units>(p);
    if (isBigEndian) units = units << 8 | units >> 8;
    if (!everyBit(within(units, 0, 0x7F))) return 0;
    const Block block = lowBytes(units);
    if (references && firstByteEqualTo(block, '&') != 0) return 0;
    out = putAsciiBlock<form>(block, kBlockUnits, entries_, out);
    account_.addCharacters(kBlockUnits);
    return kBlockUnits;
  }

  template <bool references>
  const Byte* takeRun(const Byte* p, const Byte* end, char*& out) {
    const Byte* const blockEnd = end - p > 2 * kBlockBytes ? p + 2 * kBlockBytes : end;
    return takeEntries<2>(p, blockEnd, out, [](const Byte* at) {
      return references && load(at) == '&' ? kNone : load(at);
    });
  }

  // Returns the units taken.
  std::size_t takeOther(const Byte* p, std::size_t left, bool ended) {
    const Unit unit = load(p);
    if (isHighSurrogate(unit)) {
      if (left < 2 && !ended) return 0;
      if (left >= 2 && isLowSurrogate(load(p + 2))) {
        const CodePoint c = 0x10000 + ((unit & 0x3FFu) << 10 | (load(p + 2) & 0x3FFu));
        putCodePoint(c, p, 4, c);
        return 2;
      }
    }
    put(entries_[unit], p, 2, isSurrogate(unit) ? kNoCodePoint : unit);
    return 1;
  }

  std::size_t reference(const Byte* p, std::size_t left, bool ended) {
    char text[kLongestReference];
    std::size_t size = 0;
    for (; size < std::min(left, kLongestReference) && load(p + 2 * size) < 0x80; ++size) {
      text[size] = static_cast<char>(load(p + 2 * size));
    }
    return takeReference({text, size}, ended || size < left, p, 2);
  }
};

}  // namespace

std::unique_ptr<Decoder> makeUnitDecoder(const Decoder::Surroundings& around, bool isBigEndian) {
  if (isBigEndian) return std::make_unique<UnitDecoder<true>>(around);
  return std::make_unique<UnitDecoder<false>>(around);
}

}  // namespace sgbk::text
