#include "code_table.h"

#include <atomic>
#include <memory>

#include "library_tables.h"
#include "made_once.h"
#include "sgbk/EncodingConvertor.h"

namespace sgbk::text {
namespace {

// The kinds of the longest code points that fit beside them.
static_assert(rareEntry(Rare::nothing, 0x10FFFF) < 1u << 24);

Entry entryFor(std::string_view bytes) {
  Entry entry = static_cast<Entry>(bytes.size()) << 24;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    entry |= static_cast<Entry>(static_cast<Byte>(bytes[i])) << 8 * i;
  }
  return entry;
}

// A unit below 80 is one ASCII byte.
Entry entryFor(gchar_t unit) { return (unit < 0x80 ? 1u : 2u) << 24 | unit; }

constexpr bool isMarkup(gchar_t unit) {
  return unit == unitOf(0xA3, 0xA6) || unit == unitOf(0xA3, 0xBC) || unit == unitOf(0xA3, 0xBE);
}

// Composes the entries of one table.
class Composer {
 public:
  explicit Composer(const CodeTable& table) : table_(table), key_(table.key) {}

  Entry entryAt(gchar_t index) const {
    if (index < 0x80) return ascii(static_cast<Byte>(index));
    switch (key_.codes) {
      case Codes::unicode: return ofCodePoint(index);
      case Codes::big5:
        if (!hasShape(index, isBig5Trail)) return rareEntry(Rare::malformed, 0);
        if (const gchar_t unit = library_.fromBig5[index]) return ofUnit(unit, 0);
        if (const CodePoint c = codePointOfBig5(index)) return ofMissing(c);
        break;
      case Codes::gbk:
        if (!hasShape(index, isGbkTrail)) return rareEntry(Rare::malformed, 0);
        if (library_.fromGbk[index] == 0) {
          const CodePoint c = codePointOfGbk(index);
          if (c == kNoCodePoint || isPrivateUse(c)) break;
          return ofMissing(c);
        }
        return ofUnit(key_.simplify ? library_.fromGbk[index] : index, 0);
    }
    return rareEntry(Rare::undefined, 0);
  }

 private:
  static bool hasShape(gchar_t code, bool (*isTrail)(Byte)) {
    return isLeadByte(leadOf(code)) && isTrail(trailOf(code));
  }

  Entry ascii(Byte c) const {
    if (key_.foldCase && c >= 'A' && c <= 'Z') c = static_cast<Byte>(c + ('a' - 'A'));
    if (key_.form == Form::target && key_.target == Target::gbkWide)
      return 2u << 24 | library_.widened[c];
    if (key_.form == Form::target && key_.target == Target::utf16le) return 2u << 24 | c;
    return 1u << 24 | c;
  }

  Entry ofCodePoint(gchar_t c) const {
    if (c == kByteOrderMark) return rareEntry(Rare::nothing, c);
    if (isSurrogate(c)) return rareEntry(Rare::malformed, 0);
    if (const gchar_t unit = library_.fromUnicode[c]) return ofUnit(unit, c);
    return ofMissing(c);
  }

  // A character that GBK lacks.
  Entry ofMissing(CodePoint c) const {
    const Sequence bytes = table_.encode(c);
    if (bytes.size > 3) return rareEntry(Rare::beyond, c);
    if (bytes.size != 0) return entryFor(bytes.view());
    const bool isReplaced = key_.codes == Codes::unicode && !replacementFor(c).empty();
    return rareEntry(isReplaced ? Rare::replaced : Rare::lacking, c);
  }

  // c  the code point that it was in the source, for the account of losses
  Entry ofUnit(gchar_t unit, CodePoint c) const {
    if (key_.foldCase) unit = toLowerCase(unit);
    if (key_.markup && isMarkup(unit)) {
      if (key_.form == Form::middle) return entryFor(unit);
      return rareEntry(Rare::markup, trailOf(unit) - 0x80u);
    }
    if (key_.halfWidth) {
      const char text[] = {static_cast<char>(leadOf(unit)), static_cast<char>(trailOf(unit))};
      char folded[4];
      if (sbc2dbc(text, 2, folded, sizeof folded, false) == 1)
        return ascii(static_cast<Byte>(folded[0]));
    }
    const gchar_t big5 = (key_.traditional ? library_.toTraditionalBig5 : library_.toBig5)[unit];
    if (key_.target == Target::big5 && big5 == 0) return rareEntry(Rare::lacking, c);
    if (key_.form == Form::middle) return entryFor(unit);
    switch (key_.target) {
      case Target::gbk:
      case Target::gb18030:
      case Target::gbkWide: return entryFor(unit);
      case Target::big5: return entryFor(big5);
      case Target::utf8:
      case Target::utf16le: break;
    }
    const Sequence bytes = table_.encode(codePointOfGbk(unit));
    return bytes.size == 4 ? rareEntry(Rare::beyond, codePointOfGbk(unit)) : entryFor(bytes.view());
  }

  const CodeTable& table_;
  const TableKey& key_;
  const LibraryTables& library_ = libraryTables();
};

// The tables made so far, the newest first. They are never taken out.
struct Node {
  explicit Node(const TableKey& key) : table(key) {}

  const CodeTable table;
  const Node* next = nullptr;
};
std::atomic<const Node*> newest;

}  // namespace

CodeTable::CodeTable(const TableKey& tableKey) : key(tableKey) {
  const Composer composer(*this);
  for (unsigned i = 0; i < entries.size(); ++i)
    entries[i] = composer.entryAt(static_cast<gchar_t>(i));
}

Entry CodeTable::entryOf(CodePoint c) const {
  if (c < 0x10000) return entries[c];
  if (const CodePoint before = privatePointOf(c)) return entries[before];
  const bool isLacking = key.target == Target::big5 ? big5Of(c).size == 0
                                                    : key.target == Target::gbk ||
                                                          key.target == Target::gbkWide;
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
  return key.form == Form::middle && bytes.size != 0 ? fourBytesOf(c) : bytes;
}

std::string_view replacementFor(CodePoint c) {
  struct Replacements {
    struct {
      CodePoint c;
      const char* entity;
      char ascii[4];
    } rows[4] = {{0xA9, "copy", {}}, {0xBC, "frac14", {}}, {0xBD, "frac12", {}}, {0x2122, "trade", {}}};

    Replacements() {
      for (auto& row : rows) deEscHtml(row.entity, row.ascii);
    }
  };
  for (const auto& row : madeOnce<Replacements>().rows) {
    if (row.c == c) return row.ascii;
  }
  return {};
}

const CodeTable& codeTable(const TableKey& key) {
  for (const Node* node = newest.load(std::memory_order_acquire); node != nullptr;
       node = node->next) {
    if (node->table.key == key) return node->table;
  }
  // Another thread may make the same one meanwhile: both are kept, and equal.
  Node* const made = std::make_unique<Node>(key).release();
  made->next = newest.load(std::memory_order_relaxed);
  while (!newest.compare_exchange_weak(made->next, made, std::memory_order_acq_rel)) {
  }
  return made->table;
}

}  // namespace sgbk::text
