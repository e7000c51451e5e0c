#include "code_table.h"

#include "made_once.h"
#include "sgbk/EncodingConvertor.h"

namespace sgbk::text {
namespace {

// The kinds of the longest code points that fit beside them.
static_assert(rareEntry(Rare::nothing, 0x10FFFF) < 1u << 24);

// A unit below 80 is one ASCII byte.
Entry entryFor(gchar_t unit) { return (unit < 0x80 ? 1u : 2u) << 24 | unit; }

constexpr bool isMarkup(gchar_t unit) {
  return unit == unitOf(0xA3, 0xA6) || unit == unitOf(0xA3, 0xBC) || unit == unitOf(0xA3, 0xBE);
}

Entry ofAscii(const CodeTable& table, char c) {
  const bool isTarget = !table.key.isMiddle;
  const auto byte = static_cast<Byte>(table.key.foldCase ? lower(c) : c);
  if (isTarget && table.key.target == Target::gbkWide)
    return 2u << 24 | table.library.widened[byte];
  return (isTarget && table.key.target == Target::utf16le ? 2u : 1u) << 24 | byte;
}

// Not by way of GBK.
Entry ofCodePoint(const CodeTable& table, CodePoint c) {
  const Sequence bytes = table.encode(c);
  if (bytes.size > 3) return rareEntry(Rare::beyond, c);
  if (bytes.size == 0) return rareEntry(Rare::lacking, c);
  return Entry{bytes.size} << 24 | load<Entry>(bytes.bytes);
}

// c  the code point that it was in the source, for the account of losses
Entry ofUnit(const CodeTable& table, gchar_t unit, CodePoint c) {
  const TableKey& key = table.key;
  const bool isTarget = !key.isMiddle;
  if (key.foldCase) unit = toLowerCase(unit);
  if (key.html && isMarkup(unit))
    return isTarget ? rareEntry(Rare::markup, trailOf(unit) - 0x80u) : entryFor(unit);
  if (key.halfWidth) {
    const char text[] = {static_cast<char>(leadOf(unit)), static_cast<char>(trailOf(unit))};
    char folded[4];
    if (sbc2dbc(text, 2, folded, sizeof folded, false) == 1) return ofAscii(table, folded[0]);
  }
  if (key.target == Target::big5) {
    const gchar_t big5 =
        (key.traditional ? table.library.toTraditionalBig5 : table.library.toBig5)[unit];
    if (big5 == 0) return rareEntry(Rare::lacking, c);
    if (isTarget) return entryFor(big5);
  }
  const bool isUnicode = key.target == Target::utf8 || key.target == Target::utf16le;
  return isTarget && isUnicode ? ofCodePoint(table, sgbk_gbk_code_points[unit]) : entryFor(unit);
}

Entry entryAt(const CodeTable& table, gchar_t index) {
  const Codes codes = table.key.codes;
  if (index < 0x80) return ofAscii(table, static_cast<char>(index));
  const bool isTrail =
      codes == Codes::big5 ? isBig5Trail(trailOf(index)) : isGbkTrail(trailOf(index));
  const bool isUnicode = codes == Codes::unicode;
  const bool hasShape = isUnicode ? !isSurrogate(index) : isTrail && isLeadByte(leadOf(index));
  if (!hasShape) return rareEntry(Rare::malformed, 0);
  if (isUnicode && index == kByteOrderMark) return rareEntry(Rare::nothing, index);
  if (const gchar_t unit = table.library.from[static_cast<std::size_t>(codes)][index])
    return ofUnit(table, codes == Codes::gbk && !table.key.simplify ? index : unit,
                  isUnicode ? index : 0);
  const CodePoint c = isUnicode              ? index
                      : codes == Codes::big5 ? sgbk_big5_code_points[index]
                                             : sgbk_gbk_code_points[index];
  const bool isCharacter = isUnicode || (c != kNoCodePoint && !isPrivateUse(c));
  return isCharacter ? ofCodePoint(table, c) : rareEntry(Rare::undefined, 0);
}

}  // namespace

CodeTable::CodeTable(const TableKey& tableKey) : key(tableKey) {
  for (unsigned i = 0; i < entries.size(); ++i)
    entries[i] = entryAt(*this, static_cast<gchar_t>(i));
  for (std::size_t i = 0; key.codes == Codes::unicode && i < std::size(kReplacements); ++i) {
    const CodePoint c = kReplacements[i].c;
    if (entries[c] == rareEntry(Rare::lacking, c))
      entries[c] = rareEntry(Rare::replaced, static_cast<CodePoint>(i));
  }
}

Entry CodeTable::entryOf(CodePoint c) const {
  if (c < 0x10000) return entries[c];
  if (const CodePoint before = privatePointOf(c)) return entries[before];
  const bool isGbk = key.target == Target::gbk || key.target == Target::gbkWide;
  const bool isLacking = isGbk || (key.target == Target::big5 && big5Of(c).size == 0);
  return rareEntry(isLacking ? Rare::lacking : Rare::beyond, c);
}

Sequence CodeTable::encode(CodePoint c) const {
  Sequence bytes;
  switch (key.target) {
    case Target::gbk:
    case Target::gbkWide: break;
    case Target::big5: bytes = big5Of(c); break;
    case Target::gb18030: bytes = gb18030Of(c); break;
    case Target::utf8: bytes = utf8Of(c); break;
    case Target::utf16le: bytes = utf16leOf(c); break;
  }
  return key.isMiddle && bytes.size != 0 ? fourBytesOf(c) : bytes;
}

const CodeTable& codeTable(const TableKey& key) { return madeOnce<CodeTable>(key); }

}  // namespace sgbk::text
