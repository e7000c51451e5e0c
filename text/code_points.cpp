#include "code_points.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "made_once.h"

namespace sgbk::text {
namespace {

// Characters of two-byte codes that had private code points in the first edition of GB18030, which
// numbers the four-byte codes.
struct MovedCharacter {
  CodePoint now;  // in this order
  CodePoint before;
};
constexpr MovedCharacter kMoved[] = {
    {0x1E3F, 0xE7C7},  {0x9FB4, 0xE81E},  {0x9FB5, 0xE826},  {0x9FB6, 0xE82B},  {0x9FB7, 0xE82C},
    {0x9FB8, 0xE832},  {0x9FB9, 0xE843},  {0x9FBA, 0xE854},  {0x9FBB, 0xE864},  {0x20087, 0xE816},
    {0x20089, 0xE817}, {0x200CC, 0xE818}, {0x215D7, 0xE831}, {0x2298F, 0xE83B}, {0x241FE, 0xE855}};

constexpr std::size_t kFourByteCodes = 39420;       // of the Basic Multilingual Plane
constexpr std::size_t kSupplementaryRank = 189000;  // of U+10000

constexpr Sequence twoBytes(gchar_t unit) {
  return {2, {static_cast<char>(leadOf(unit)), static_cast<char>(trailOf(unit))}};
}

// GB18030 beyond GBK. The four-byte codes go to the code points that have no two-byte code, in
// their order.
struct Gb18030 {
  std::array<gchar_t, 0x10000> twoByteCode{};
  std::array<std::uint16_t, 0x10000> rank{};
  std::array<std::uint16_t, kFourByteCodes> codePoint{};

  Gb18030() {
    for (unsigned code = 0; code < 0x10000; ++code) {
      const CodePoint c = sgbk_gbk_code_points[code];
      if (c == kNoCodePoint) continue;
      if (c < 0x10000) twoByteCode[c] = static_cast<gchar_t>(code);
      if (const CodePoint before = privatePointOf(c))
        twoByteCode[before] = static_cast<gchar_t>(code);
    }
    std::uint16_t next = 0;
    for (CodePoint c = 0x80; c < 0x10000; ++c) {
      const bool hadTwoBytes = twoByteCode[c] != 0 && privatePointOf(c) == kNoCodePoint;
      if (hadTwoBytes || isSurrogate(c)) continue;
      codePoint[next] = static_cast<std::uint16_t>(c);
      rank[c] = next++;
    }
  }
};

// The rows that every reader of Big5 knows.
constexpr bool isCommonBig5(gchar_t unit) {
  const unsigned code = leadOf(unit) * 256u + trailOf(unit);
  return (code >= 0xA140 && code <= 0xC67E) || (code >= 0xC940 && code <= 0xF9FE);
}

// Big5 by character. The other rows are for what has no code in the common ones.
struct Big5 {
  std::array<gchar_t, 0x30000> codes{};  // up to plane 2, where they all are

  Big5() {
    for (unsigned code = 0x8140; code <= 0xFEFE; ++code) {
      const auto unit = unitOf(static_cast<Byte>(code >> 8), static_cast<Byte>(code & 0xFF));
      const CodePoint c = sgbk_big5_code_points[unit];
      if (c == kNoCodePoint) continue;
      const bool isBetter = isCommonBig5(unit) && !isCommonBig5(codes.at(c));
      if (codes.at(c) == 0 || isBetter) codes[c] = unit;
    }
  }
};

}  // namespace

CodePoint privatePointOf(CodePoint c) {
  const auto* const moved = std::ranges::lower_bound(kMoved, c, {}, &MovedCharacter::now);
  return moved != std::end(kMoved) && moved->now == c ? moved->before : kNoCodePoint;
}

Sequence utf8Of(CodePoint c) {
  const auto tail = [c](int shift) { return static_cast<char>(0x80 | (c >> shift & 0x3F)); };
  if (c < 0x80) return {1, {static_cast<char>(c)}};
  if (c < 0x800) return {2, {static_cast<char>(0xC0 | c >> 6), tail(0)}};
  if (isSurrogate(c)) return {};
  if (c < 0x10000) return {3, {static_cast<char>(0xE0 | c >> 12), tail(6), tail(0)}};
  return {4, {static_cast<char>(0xF0 | c >> 18), tail(12), tail(6), tail(0)}};
}

Sequence utf16leOf(CodePoint c) {
  const auto low = [](CodePoint unit) { return static_cast<char>(unit & 0xFF); };
  const auto high = [](CodePoint unit) { return static_cast<char>(unit >> 8); };
  if (isSurrogate(c)) return {};
  if (c < 0x10000) return {2, {low(c), high(c)}};
  const CodePoint first = 0xD7C0 + (c >> 10);
  const CodePoint second = 0xDC00 | (c & 0x3FF);
  return {4, {low(first), high(first), low(second), high(second)}};
}

Sequence gb18030Of(CodePoint c) {
  if (c < 0x80) return {1, {static_cast<char>(c)}};
  if (isSurrogate(c)) return {};
  if (c >= 0x10000)
    return fourBytesOf(static_cast<std::uint32_t>(kSupplementaryRank) + c - 0x10000);
  const auto& gb18030 = madeOnce<Gb18030>();
  const gchar_t code = gb18030.twoByteCode[c];
  return code != 0 ? twoBytes(code) : fourBytesOf(gb18030.rank[c]);
}

CodePoint codePointOfGb18030(const Byte* bytes) {
  const std::uint32_t rank = rankOf(bytes);
  if (rank < kFourByteCodes) return madeOnce<Gb18030>().codePoint[rank];
  if (rank < kSupplementaryRank || rank >= kSupplementaryRank + 0x100000) return kNoCodePoint;
  return static_cast<CodePoint>(0x10000 + rank - kSupplementaryRank);
}

Sequence big5Of(CodePoint c) {
  const auto& codes = madeOnce<Big5>().codes;
  return c < codes.size() && codes[c] != 0 ? twoBytes(codes[c]) : Sequence{};
}

}  // namespace sgbk::text
