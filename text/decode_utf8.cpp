// UTF-8. What is damaged is lost by maximal parts: as much as could have begun a character.

#include "decoding_loop.h"

namespace sgbk::text {
namespace {

constexpr bool isContinuation(Byte b) { return (b & 0xC0) == 0x80; }

// The bytes of a sequence by its first byte, 0 when that is none.
constexpr unsigned sequenceSize(Byte lead) {
  return lead >= 0xC2 && lead <= 0xDF   ? 2
         : lead >= 0xE0 && lead <= 0xEF ? 3
         : lead >= 0xF0 && lead <= 0xF4 ? 4
                                        : 0;
}

// Neither an overlong form, nor a surrogate, nor beyond the last code point.
constexpr bool maySecondFollow(Byte lead, Byte second) {
  const Byte first = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const Byte last = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  return second >= first && second <= last;
}

// Whether the bytes may be a surrogate pair whose halves were encoded one by one.
constexpr bool mayBeSurrogates(const Byte* p, std::size_t left) {
  constexpr Byte kFirst[] = {0xED, 0xA0, 0x80, 0xED, 0xB0, 0x80};
  constexpr Byte kLast[] = {0xED, 0xAF, 0xBF, 0xED, 0xBF, 0xBF};
  for (std::size_t i = 0; i < std::min<std::size_t>(left, 6); ++i) {
    if (p[i] < kFirst[i] || p[i] > kLast[i]) return false;
  }
  return true;
}

class Utf8Decoder : public DecodingLoop<Utf8Decoder> {
 public:
  using DecodingLoop::DecodingLoop;

  // Three bytes each, as nearly all ideographs are.
  template <bool>
  const Byte* takeRun(const Byte* p, const Byte* end, char*& out) {
    return takeEntries<3, 4>(p, end, out, [](const Byte* at) {
      const auto bytes = load<std::uint32_t>(at);
      const int c = (at[0] << 12) + (at[1] << 6) + at[2] - 0xE2080;
      return (bytes & 0xC0C0F0) == 0x8080E0 && c >= 0x800 ? c : kNone;
    });
  }

  std::size_t takeOther(const Byte* p, std::size_t left, bool ended) {
    const unsigned size = sequenceSize(*p);
    CodePoint c = size == 0 ? 0 : *p & (0x7Fu >> size);
    for (unsigned i = 1; i < size; ++i) {
      if (i == left) return ended ? putMalformed(p, i) : 0;
      if (i == 1 ? !maySecondFollow(*p, p[1]) : !isContinuation(p[i])) {
        return i == 1 ? takeSurrogates(p, left, ended) : putMalformed(p, i);
      }
      c = c << 6 | (p[i] & 0x3Fu);
    }
    if (size == 0) return putMalformed(p, 1);
    putCodePoint(c, p, size, c);
    return size;
  }

 private:
  std::size_t takeSurrogates(const Byte* p, std::size_t left, bool ended) {
    if (!mayBeSurrogates(p, left)) return putMalformed(p, 1);
    if (left < 6) return ended ? putMalformed(p, 1) : 0;
    const auto half = [](const Byte* at) { return (at[1] & 0x0Fu) << 6 | (at[2] & 0x3Fu); };
    return putMalformed(p, 6, 0x10000 + (half(p) << 10) + (half(p + 3) & 0x3FF));
  }
};

}  // namespace

std::unique_ptr<Decoder> makeUtf8Decoder(const Decoder::Surroundings& around) {
  return std::make_unique<Utf8Decoder>(around);
}

}  // namespace sgbk::text
