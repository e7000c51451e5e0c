// Big5 and GBK: one byte or two, and in GB18030 four.

#include "decoding_loop.h"

namespace sgbk::text {
namespace {

// What four bytes of the right shape are.
enum class FourBytes { none, gb18030, middle };

template <FourBytes fourBytes, bool (*isTrail)(Byte)>
class PairDecoder : public DecodingLoop<PairDecoder<fourBytes, isTrail>> {
 public:
  using DecodingLoop<PairDecoder>::DecodingLoop;

  template <bool>
  const Byte* takeRun(const Byte* p, const Byte* end, char*& out) {
    return this->template takeEntries<2>(
        p, end, out, [](const Byte* at) { return isAscii(*at) ? Decoder::kNone : loadUnit(at); });
  }

  std::size_t takeOther(const Byte* p, std::size_t left, bool ended) {
    if (!isLeadByte(*p)) return this->putMalformed(p, 1);
    if (left < 2) return ended ? this->putMalformed(p, 1) : 0;
    if (fourBytes != FourBytes::none && isFourBytesDigit(p[1])) {
      if (left < 4 && !ended && (left < 3 || isLeadByte(p[2]))) return 0;
      if (left >= 4 && isLeadByte(p[2]) && isFourBytesDigit(p[3])) return takeFourBytes(p);
    }
    // No malformed byte takes ASCII along.
    if (!isTrail(p[1])) return this->putMalformed(p, isAscii(p[1]) ? 1 : 2);
    this->put(this->entries_[loadUnit(p)], p, 2);
    return 2;
  }

 private:
  std::size_t takeFourBytes(const Byte* p) {
    const bool isMiddle = fourBytes == FourBytes::middle;
    const CodePoint c = isMiddle ? rankOf(p) : codePointOfGb18030(p);
    if (c == kNoCodePoint) {
      this->put(rareEntry(Rare::undefined, 0), p, 4);
    } else if (isMiddle) {
      this->put(rareEntry(Rare::beyond, c), p, 4);
    } else {
      this->putCodePoint(c, p, 4, kNoCodePoint);
    }
    return 4;
  }
};

}  // namespace

std::unique_ptr<Decoder> makeBig5Decoder(const Decoder::Surroundings& around) {
  return std::make_unique<PairDecoder<FourBytes::none, isBig5Trail>>(around);
}
std::unique_ptr<Decoder> makeGbkDecoder(const Decoder::Surroundings& around) {
  return std::make_unique<PairDecoder<FourBytes::gb18030, isGbkTrail>>(around);
}
std::unique_ptr<Decoder> makeMiddleDecoder(const Decoder::Surroundings& around) {
  return std::make_unique<PairDecoder<FourBytes::middle, isGbkTrail>>(around);
}

}  // namespace sgbk::text
