// All that the library's four tables answer, asked once a process by its public calls.

#ifndef SGBK_TEXT_LIBRARY_TABLES_H
#define SGBK_TEXT_LIBRARY_TABLES_H

#include <array>

#include "core/gbk_bytes.h"

namespace sgbk::text {

struct LibraryTables {
  using Table = std::array<gchar_t, 0x10000>;

  // By Big5 code, GBK code and code point: the simplified character in GBK, 0 for none.
  Table fromBig5{};
  Table fromGbk{};
  Table fromUnicode{};
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

// Creates the process's converter the first time, if there is none. Throws std::bad_alloc.
const LibraryTables& libraryTables();

// A code that may stand in GBK text: of the right shape, and of no user-defined area.
constexpr bool isGbkTrail(Byte b) { return b >= 0x40 && b != 0x7F && b != 0xFF; }
constexpr bool isBig5Trail(Byte b) { return (b >= 0x40 && b < 0x7F) || (b >= 0xA1 && b != 0xFF); }
constexpr bool isGbkCharacter(gchar_t unit) {
  return isLeadByte(leadOf(unit)) && isGbkTrail(trailOf(unit)) && !isGBKUndefinedChar(unit);
}

}  // namespace sgbk::text

#endif
