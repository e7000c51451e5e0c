// UTF-8. What is damaged is lost by maximal parts: as much as could have begun a character.

#include "byte_decoder.h"

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

class Utf8Decoder : public ByteDecoder<Utf8Decoder> {
 public:
  using ByteDecoder::ByteDecoder;

  static constexpr Byte kEscape = 0;
  static constexpr bool isAsciiMode() { return true; }

  // Three bytes each, as nearly all ideographs are.
  const Byte* takeRun(const Byte* p, const Byte* end, char*& out) {
    const Entry* const entries = entries_;
    const Byte* const begin = p;
    char* to = out;
    for (; end - p >= 4; p += 3) {
      std::uint32_t bytes;
      std::memcpy(&bytes, p, sizeof bytes);
      const CodePoint c = (CodePoint{p[0]} << 12) + (CodePoint{p[1]} << 6) + p[2] - 0xE2080;
      if ((bytes & 0xC0C0F0) != 0x8080E0 || c < 0x800) break;
      const Entry entry = entries[c];
      if (isRare(entry)) break;
      std::memcpy(to, &entry, sizeof entry);
      to += sizeOf(entry);
    }
    out = to;
    account_.addCharacters((p - begin) / 3);
    return p;
  }

  std::size_t takeOther(const Byte* p, std::size_t left, bool ended) {
    const unsigned size = sequenceSize(*p);
    CodePoint c = size == 0 ? 0 : *p & (0x7Fu >> size);
    for (unsigned i = 1; i < size; ++i) {
      if (i == left) return ended ? malformed(p, i) : 0;
      if (i == 1 ? !maySecondFollow(*p, p[1]) : !isContinuation(p[i])) {
        return i == 1 ? takeSurrogates(p, left, ended) : malformed(p, i);
      }
      c = c << 6 | (p[i] & 0x3Fu);
    }
    if (size == 0) return malformed(p, 1);
    putCodePoint(c, p, size, c);
    return size;
  }

 private:
  std::size_t malformed(const Byte* p, std::size_t size, CodePoint c = kNoCodePoint) {
    putMalformed(p, size, c);
    return size;
  }

  std::size_t takeSurrogates(const Byte* p, std::size_t left, bool ended) {
    if (!mayBeSurrogates(p, left)) return malformed(p, 1);
    if (left < 6) return ended ? malformed(p, 1) : 0;
    const auto half = [](const Byte* at) { return (at[1] & 0x0Fu) << 6 | (at[2] & 0x3Fu); };
    return malformed(p, 6, 0x10000 + (half(p) << 10) + (half(p + 3) & 0x3FF));
  }
};

}  // namespace

std::unique_ptr<Decoder> makeUtf8Decoder(const Decoder::Surroundings& around) {
  return std::make_unique<Utf8Decoder>(around);
}

}  // namespace sgbk::text
