// From a source code to the bytes of the output in one look-up: decoding, simplifying, folding and
// encoding composed into one table for each combination that is in use.

#ifndef SGBK_TEXT_CODE_TABLE_H
#define SGBK_TEXT_CODE_TABLE_H

#include <array>
#include <string>

#include "code_points.h"
#include "options.h"

namespace sgbk::text {

constexpr Codes codesOf(Source source) {
  switch (source) {
    case Source::big5: return Codes::big5;
    case Source::gbk:
    case Source::hz: return Codes::gbk;
    default: return Codes::unicode;
  }
}

// All that the library answers, asked once a process by its public calls.
struct LibraryTables {
  using Table = std::array<gchar_t, 0x10000>;

  // By Codes, and by such a code: the simplified character in GBK, 0 for none.
  std::array<Table, 3> from{};
  // By GBK code: the Big5 code, or one ASCII byte for what is folded to it; 0 for none. The second
  // prefers the traditional form of a character to its own code.
  Table toBig5{};
  Table toTraditionalBig5{};
  // What ASCII is widened to.
  std::array<gchar_t, 0x80> widened{};
  // False when the loaded table is not the one that toTraditionalBig5 is a variant of.
  bool hasTraditional = true;

  LibraryTables();
};

// Characters that, where the target lacks them, have ASCII for their entities.
inline constexpr struct {
  CodePoint c;
  const char* entity;
} kReplacements[] = {{0xA9, "copy"}, {0xBC, "frac14"}, {0xBD, "frac12"}, {0x2122, "trade"}};

// Creates the process's converter the first time, if there is none. Throws std::bad_alloc.
const LibraryTables& libraryTables();

// A code that may stand in GBK text: of the right shape, and of no user-defined area.
constexpr bool isGbkTrail(Byte b) { return b >= 0x40 && b != 0x7F && b != 0xFF; }
constexpr bool isBig5Trail(Byte b) { return (b >= 0x40 && b < 0x7F) || (b >= 0xA1 && b != 0xFF); }
constexpr bool isGbkCharacter(gchar_t unit) {
  return isLeadByte(leadOf(unit)) && isGbkTrail(trailOf(unit)) && !isGBKUndefinedChar(unit);
}

// An entry holds up to three bytes, the first lowest, and their number above. Where it holds none,
// there is a kind instead, with a code point or the place of a replacement.
using Entry = std::uint32_t;

enum class Rare : unsigned {
  malformed,  // no code
  undefined,  // a code without a character
  lacking,    // a character that the target lacks
  replaced,   // the same, but there is ASCII for it
  beyond,     // a character of four bytes in the output
  markup,     // a reference is written
  nothing     // a byte-order mark
};

constexpr bool isRare(Entry entry) { return entry < 1u << 24; }
constexpr unsigned sizeOf(Entry entry) { return entry >> 24; }
constexpr Rare kindOf(Entry entry) { return static_cast<Rare>(entry >> 21); }
constexpr CodePoint codePointOf(Entry entry) { return entry & 0x1FFFFF; }
constexpr Entry rareEntry(Rare kind, CodePoint c) { return static_cast<unsigned>(kind) << 21 | c; }

struct CodeTable {
  const TableKey key;
  const LibraryTables& library = libraryTables();
  std::array<Entry, 0x10000> entries;

  explicit CodeTable(const TableKey& tableKey);

  // The entry of a code point, where the table is indexed by them.
  Entry entryOf(CodePoint c) const;
  // The character in the output's bytes; none when that is lacking.
  Sequence encode(CodePoint c) const;
};

// Made once for each key and kept for the process. Throws std::bad_alloc.
const CodeTable& codeTable(const TableKey& key);

}  // namespace sgbk::text

#endif
