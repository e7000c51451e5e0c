#include <new>
#include <vector>

#include "code_table.h"
#include "made_once.h"
#include "sgbk/EncodingConvertor.h"

// Triples of codes that the build makes, lead byte first: a GBK code, the Big5 code of its
// character, and that of the character's traditional form.
extern "C" const unsigned char sgbk_traditional_first[];
extern "C" const unsigned char sgbk_traditional_first_end[];

namespace sgbk::text {
namespace {

using Table = LibraryTables::Table;
using Conversion = int (EncodingConvertor::*)(const char*, int, char*, int);

constexpr gchar_t kUnmapped = 0x3F3F;
constexpr gchar_t kBig5Space = unitOf(0xA1, 0x40);
constexpr gchar_t kWhiteSquare = unitOf(0xA1, 0xBC);  // Big5: for what it lacks
constexpr unsigned short kWhiteSquareCodePoint = 0x25A1;

template <bool (*isTrail)(Byte)>
std::vector<gchar_t> allCodes() {
  std::vector<gchar_t> codes;
  for (unsigned code = 0x8140; code <= 0xFEFE; ++code) {
    const auto trail = static_cast<Byte>(code & 0xFF);
    if (isTrail(trail)) codes.push_back(unitOf(static_cast<Byte>(code >> 8), trail));
  }
  return codes;
}

// What has no character comes out as a blank, which only `space` is.
void askStream(EncodingConvertor& converter, Conversion conversion,
               const std::vector<gchar_t>& codes, gchar_t space, Table& table) {
  const int size = static_cast<int>(2 * codes.size());
  std::vector<gchar_t> units(codes.size());
  (converter.*conversion)(reinterpret_cast<const char*>(codes.data()), size,
                          reinterpret_cast<char*>(units.data()), size);
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const bool isCharacter = units[i] != CHINESE_SPACE_CHAR || codes[i] == space;
    if (isCharacter && isGbkCharacter(units[i])) table[codes[i]] = units[i];
  }
}

}  // namespace

LibraryTables::LibraryTables() {
  if (EncodingConvertor::initializeInstance(nullptr) != 0) throw std::bad_alloc();
  EncodingConvertor& converter = *EncodingConvertor::getInstance();
  auto& [fromBig5, fromGbk, fromUnicode] = from;
  auto gbkCodes = allCodes<isGbkTrail>();
  askStream(converter, &EncodingConvertor::b52sgbk, allCodes<isBig5Trail>(), kBig5Space, fromBig5);
  askStream(converter, &EncodingConvertor::t2sgbk, gbkCodes, CHINESE_SPACE_CHAR, fromGbk);
  for (unsigned c = 0; c < fromUnicode.size(); ++c) {
    const gchar_t unit = converter.getucgvalue(static_cast<unsigned short>(c));
    if (c < widened.size()) widened[c] = unit;
    if (unit != kUnmapped && isGbkCharacter(unit)) fromUnicode[c] = unit;
  }

  std::erase_if(gbkCodes, [](gchar_t code) { return !isGbkCharacter(code); });
  const std::string text(reinterpret_cast<const char*>(gbkCodes.data()), 2 * gbkCodes.size());
  std::string big5(text.size() + 4, '\0');
  converter.gchar2big5(text.c_str(), big5.data(), static_cast<int>(big5.size()), false);
  const Byte* written = bytesOf(big5.data());
  for (const gchar_t code : gbkCodes) {
    const gchar_t entry = isAscii(*written) ? *written : loadUnit(written);
    const bool isLacking = entry == kWhiteSquare && code != fromUnicode[kWhiteSquareCodePoint];
    toBig5[code] = isLacking ? gchar_t{0} : entry;
    written += isAscii(*written) ? 1 : 2;
  }

  toTraditionalBig5 = toBig5;
  for (const Byte* p = sgbk_traditional_first; p != sgbk_traditional_first_end; p += 6) {
    const gchar_t code = loadUnit(p);
    const gchar_t traditional = loadUnit(p + 4);
    hasTraditional =
        hasTraditional && (toBig5[code] == loadUnit(p + 2) || toBig5[code] == traditional);
    toTraditionalBig5[code] = traditional;
  }
}

const LibraryTables& libraryTables() { return madeOnce<LibraryTables>(); }

}  // namespace sgbk::text
