// HZ: pairs of 7-bit bytes between "~{" and "~}". Each line begins in ASCII mode.

#include "decoding_loop.h"

namespace sgbk::text {
namespace {

constexpr bool isGbByte(Byte b) { return b >= 0x21 && b <= 0x7E; }
constexpr bool isPair(const Byte* p, const Byte* end, char first, char second) {
  return end - p >= 2 && p[0] == first && p[1] == second;
}
constexpr bool isLineEnd(Byte b) { return b == '\n' || b == '\r'; }

class HzDecoder : public DecodingLoop<HzDecoder> {
 public:
  using DecodingLoop::DecodingLoop;

  static constexpr Byte kEscape = '~';
  bool isAsciiMode() const { return !isGbMode_; }

  // With the escapes around it.
  template <bool>
  const Byte* takeRun(const Byte* p, const Byte* end, char*& out) {
    if (!isGbMode_) {
      if (!isPair(p, end, '~', '{')) return p;
      isGbMode_ = true;
      p += 2;
    }
    p = takeEntries<2>(p, end, out, [](const Byte* at) {
      return at[0] != '~' && isGbByte(at[0]) && isGbByte(at[1]) ? loadUnit(at) | 0x8080 : kNone;
    });
    if (!isPair(p, end, '~', '}')) return p;
    isGbMode_ = false;
    return p + 2;
  }

  std::size_t takeOther(const Byte* p, std::size_t left, bool ended) {
    if (*p == '~') return takeEscape(p, left, ended);
    if (isGbMode_ && *p == '\n') {
      isGbMode_ = false;
      putAscii('\n');
      account_.addCharacters(1);
      return 1;
    }
    if (!isGbMode_ || !isGbByte(*p)) return putMalformed(p, 1);
    if (left < 2) return ended ? putMalformed(p, 1) : 0;
    if (!isGbByte(p[1])) return putMalformed(p, 1);
    put(entries_[loadUnit(p) | 0x8080], p, 2);
    return 2;
  }

 private:
  std::size_t takeEscape(const Byte* p, std::size_t left, bool ended) {
    if (left < 2) return ended ? putMalformed(p, 1) : 0;
    if (!isGbMode_ && p[1] == '~') {
      putAscii('~');
      account_.addCharacters(1);
      return 2;
    }
    // Joins two lines in HZ; here every line end stays.
    if (!isGbMode_ && isLineEnd(p[1])) return 1;
    return putMalformed(p, isGbByte(p[1]) ? 2 : 1);
  }

  bool isGbMode_ = false;
};

}  // namespace

std::unique_ptr<Decoder> makeHzDecoder(const Decoder::Surroundings& around) {
  return std::make_unique<HzDecoder>(around);
}

}  // namespace sgbk::text
