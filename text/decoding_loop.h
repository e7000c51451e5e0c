// The loop of all sources: blocks of ASCII, runs of other characters, and what is rare.

#ifndef SGBK_TEXT_DECODING_LOOP_H
#define SGBK_TEXT_DECODING_LOOP_H

#include "decoder.h"

namespace sgbk::text {

// The top bit of the first byte that equals `b`; bits above it may be wrong.
constexpr Block firstByteEqualTo(Block block, Byte b) {
  const Block difference = block ^ inEveryByte(b);
  return (difference - inEveryByte(0x01)) & ~difference & inEveryByte(0x80);
}

constexpr Block lowered(Block ascii) {
  const Block isCapital =
      (ascii + inEveryByte(0x80 - 'A')) & ~(ascii + inEveryByte(0x80 - 'Z' - 1));
  return ascii + ((isCapital & inEveryByte(0x80)) >> 2);
}

// Writes the first `count` characters of a block of ASCII.
template <Ascii form>
char* putAsciiBlock(Block block, std::ptrdiff_t count, const Entry* entries, char* out) {
  if constexpr (form == Ascii::wide) {
    for (std::ptrdiff_t i = 0; i < count; ++i, block >>= 8) {
      storeUnit(out + 2 * i, static_cast<gchar_t>(entries[block & 0xFF]));
    }
    return out + 2 * count;
  } else if constexpr (form == Ascii::units) {
    using Bytes = Byte __attribute__((vector_size(kBlockBytes)));
    using Units = gchar_t __attribute__((vector_size(2 * kBlockBytes)));
    Bytes bytes;
    std::memcpy(&bytes, &block, sizeof bytes);
    const auto units = __builtin_convertvector(bytes, Units);
    std::memcpy(out, &units, sizeof units);
    return out + 2 * count;
  } else {
    // Only the bytes below 80 are right, and only those are kept.
    const Block bytes = form == Ascii::lowered ? lowered(block & inEveryByte(0x7F)) : block;
    std::memcpy(out, &bytes, sizeof bytes);
    return out + count;
  }
}

// Shape has
//   takeRun<references>(p, end, out)  characters that need no second look, and where they end
//   takeOther(p, left, ended)         the bytes taken of what is rare, 0 when more is needed
// and what else is not as it is here, where ASCII is one byte.
template <class Shape>
class DecodingLoop : public Decoder {
 public:
  using Decoder::Decoder;

  static constexpr int kUnit = 1;     // the bytes of an ASCII character
  static constexpr Byte kEscape = 0;  // an ASCII byte that is not itself, 0 for none
  // Whether ASCII is ASCII now.
  static constexpr bool isAsciiMode() { return true; }

  // Eight characters of text, of which what lies after its end passes for no ASCII.
  static Block blockAt(const Byte* p, const Byte* end) {
    if (end - p >= kBlockBytes) return loadBlock(p);
    Block block = inEveryByte(0x80);
    std::memcpy(&block, p, static_cast<std::size_t>(end - p));
    return block;
  }

  // The text from p on, as far as a reference may go. It may be written to `ascii`.
  static std::string_view textAt(const Byte* p, std::size_t left, char* /*ascii*/) {
    return {reinterpret_cast<const char*>(p), left};
  }

  const Byte* decode(const Byte* p, const Byte* end, bool ended) override {
    switch (ascii_) {
      case Ascii::same: return runAs<Ascii::same>(p, end, ended);
      case Ascii::lowered: return runAs<Ascii::lowered>(p, end, ended);
      case Ascii::units: return runAs<Ascii::units>(p, end, ended);
      default: return runAs<Ascii::wide>(p, end, ended);
    }
  }

 private:
  template <Ascii form>
  const Byte* runAs(const Byte* p, const Byte* end, bool ended) {
    return around_.references ? run<form, true>(p, end, ended) : run<form, false>(p, end, ended);
  }

  template <Ascii form, bool references>
  const Byte* run(const Byte* p, const Byte* const end, bool ended) {
    Shape& shape = static_cast<Shape&>(*this);
    char* out = roomFor(end - p);
    // Counted also when a loss ends the run.
    struct Counter {
      Account& account;
      std::ptrdiff_t count = 0;
      ~Counter() { account.addCharacters(count); }
    } ascii{account_};
    while (p != end) {
      if (shape.isAsciiMode()) {
        const Block block = Shape::blockAt(p, end);
        Block stops = block & inEveryByte(0x80);
        if constexpr (references) stops |= firstByteEqualTo(block, '&');
        if constexpr (Shape::kEscape != 0) stops |= firstByteEqualTo(block, Shape::kEscape);
        if (stops == 0) [[likely]] {
          out = putAsciiBlock<form>(block, kBlockBytes, entries_, out);
          ascii.count += kBlockBytes;
          p += Shape::kUnit * kBlockBytes;
          continue;
        }
        // Fewer units are a part of the run, without a jump that depends on what they are.
        if constexpr (Shape::kUnit == 1) {
          const int count = __builtin_ctzll(stops) / 8;
          out = putAsciiBlock<form>(block, count, entries_, out);
          ascii.count += count;
          p += count;
          if (p == end) break;
        }
      }
      const Byte* const run = shape.template takeRun<references>(p, end, out);
      if (run != p) {
        p = run;
        continue;
      }
      out_->setEnd(out);
      const std::size_t taken = takeRare<references>(p, static_cast<std::size_t>(end - p), ended);
      p += taken;
      out = roomFor(end - p);
      if (taken == 0) break;
    }
    out_->setEnd(out);
    return p;
  }

  template <bool references>
  std::size_t takeRare(const Byte* p, std::size_t left, bool ended) {
    Shape& shape = static_cast<Shape&>(*this);
    if (references && shape.isAsciiMode()) {
      char ascii[kLongestReference];
      const std::string_view text = Shape::textAt(p, left, ascii);
      const bool isWhole = ended || text.size() < left / Shape::kUnit;
      if (text.starts_with('&'))
        return Shape::kUnit * takeReference(text, isWhole, p, Shape::kUnit);
    }
    return shape.takeOther(p, left, ended);
  }
};

}  // namespace sgbk::text

#endif
