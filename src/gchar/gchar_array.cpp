// GBK text to arrays of gchar_t.

#include <array>

#include "core/ascii_overlay.h"
#include "core/byte_block.h"
#include "core/undefined_codes.h"
#include "sgbk/EncodingConvertor.h"

using sgbk::Byte;

namespace {

enum class Dropped { nothing, separators };

// FD A1 and FD A2 separate cached pieces of text and are not part of it.
bool isSeparator(gchar_t code) {
  return code == sgbk::unitOf(0xFD, 0xA1) || code == sgbk::unitOf(0xFD, 0xA2);
}

// 01..7F: one test covers the terminator too.
bool isAsciiCharacter(Byte b) { return static_cast<signed char>(b) > 0; }

// Reads nothing after a terminator.
bool areFourAscii(const Byte* in) {
  return isAsciiCharacter(in[0]) && isAsciiCharacter(in[1]) && isAsciiCharacter(in[2]) &&
         isAsciiCharacter(in[3]);
}

// The loop of all three conversions. `ascii` returns the unit for a single byte, `pair` the unit
// for a double-byte code, undefined ones included.
template <Dropped dropped, class Ascii, class Pair>
int fillArray(const char* src, gchar_t* dest, int destlen, Ascii ascii, Pair pair) {
  const Byte* in = sgbk::bytesOf(src);
  gchar_t* out = dest;
  gchar_t* const end = destlen > 0 ? dest + destlen : dest;
  while (*in != 0) {
    // In a full array any further byte is a failure: the terminator would not fit either.
    if (out == end) return -1;
    // Each kind of run has its own loop.
    while (end - out >= 4 && areFourAscii(in)) {
      sgbk::unrolled<4>([=](int i) { out[i] = ascii(in[i]); });
      in += 4;
      out += 4;
    }
    while (out != end && isAsciiCharacter(*in)) *out++ = ascii(*in++);
    while (out != end && sgbk::isLeadByte(*in) && in[1] != 0) {
      const gchar_t code = sgbk::loadUnit(in);
      in += 2;
      if (dropped == Dropped::separators && isSeparator(code)) continue;
      *out++ = pair(code);
    }
    if (out == end || sgbk::isAscii(*in)) continue;
    // 80, FF, or a lead byte before the terminator, which is its trail byte and also ends the text.
    if (sgbk::isLeadByte(*in)) *out++ = pair(*in);
    in += 1;
  }
  if (out == end) return -1;
  *out = 0;
  return static_cast<int>(out - dest);
}

// The codes of which something holds, as the range of them in each row. Symbols stand among
// ideographs where no processor can predict, so what ends in a jump has to be rare.
class RareCodes {
 public:
  template <class Test>
  constexpr explicit RareCodes(Test isOne) {
    for (unsigned lead = 0xA1; lead <= 0xFE; ++lead) {
      for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
        const auto code = static_cast<gchar_t>(lead | trail << 8);
        if (!isOne(code)) continue;
        Range& range = ranges_[lead];
        if (range.first == 0) range.first = code;
        range.span = static_cast<gchar_t>(code - range.first);
      }
    }
  }
  // False for most others.
  bool mayHave(gchar_t code) const {
    const Range range = ranges_[sgbk::leadOf(code)];
    return static_cast<gchar_t>(code - range.first) <= range.span;
  }

 private:
  struct Range {
    gchar_t first = 0;
    gchar_t span = 0;
  };
  std::array<Range, 256> ranges_{};
};

constexpr RareCodes kUndefined(isGBKUndefinedChar);
constexpr RareCodes kCapitals([](gchar_t code) { return toLowerCase(code) != code; });

// Case is folded after the mapping. For single bytes the results are known in advance.
constexpr sgbk::AsciiRow kFoldedAscii =
    sgbk::asciiRow([](Byte c) { return toLowerCase(sgbk::widenedAscii(c)); });

template <Dropped dropped, class Pair>
int fillArray(const char* src, gchar_t* dest, int destlen, bool ifcase, Pair pair) {
  if (ifcase) {
    return fillArray<dropped>(
        src, dest, destlen, [](Byte c) { return kFoldedAscii[c]; },
        [pair](gchar_t code) {
          const gchar_t unit = pair(code);
          return kCapitals.mayHave(unit) ? toLowerCase(unit) : unit;
        });
  }
  return fillArray<dropped>(
      src, dest, destlen, [](Byte c) { return sgbk::kAsciiOverlay[c]; }, pair);
}

}  // namespace

int EncodingConvertor::t2sgchar(const char* src, gchar_t* dest, int destlen, bool ifcase) {
  return sgbk::withSimplifiedLookup(pu16t2stbl, [=](auto simplified) {
    return fillArray<Dropped::nothing>(src, dest, destlen, ifcase, simplified);
  });
}

int EncodingConvertor::t2sgchar_cache(const char* src, gchar_t* dest, int destlen, bool ifcase) {
  return sgbk::withSimplifiedLookup(pu16t2stbl, [=](auto simplified) {
    return fillArray<Dropped::separators>(src, dest, destlen, ifcase, simplified);
  });
}

int EncodingConvertor::dbc2gchar(const char* src, gchar_t* dest, int destlen, bool ifcase) {
  return fillArray<Dropped::nothing>(src, dest, destlen, ifcase, [](gchar_t code) {
    return kUndefined.mayHave(code) && isGBKUndefinedChar(code) ? CHINESE_SPACE_CHAR : code;
  });
}
