#include "decoder.h"

#include "sgbk/support.h"

namespace sgbk::text {

constexpr CodePoint kFullWidthShift = 0xFEE0;  // from ASCII

void Decoder::setOutput(const CodeTable& table, Buffer& out) {
  out_ = &out;
  table_ = &table;
  unicode_ = table.key.codes == Codes::unicode ? &table : nullptr;
  entries_ = table.entries.data();
  const Entry capital = entries_[Byte{'A'}];
  if (sizeOf(capital) == 2) {
    ascii_ = (capital & 0xFFFF) == 'A' ? Ascii::units : Ascii::wide;
  } else {
    ascii_ = table.key.foldCase ? Ascii::lowered : Ascii::same;
  }
}

const CodeTable& Decoder::unicode() {
  if (unicode_ == nullptr) {
    TableKey key = table_->key;
    key.codes = Codes::unicode;
    unicode_ = &codeTable(key);
  }
  return *unicode_;
}

std::size_t Decoder::take(std::string_view text, bool ended) {
  const Byte* const begin = bytesOf(text.data());
  account_.beginPiece(begin);
  const Byte* const end = decode(begin, begin + text.size(), ended);
  account_.countTo(end);
  return static_cast<std::size_t>(end - begin);
}

void Decoder::append(Entry entry) {
  char* const to = out_->room(sizeof entry);
  std::memcpy(to, &entry, sizeof entry);
  out_->setEnd(to + sizeOf(entry));
}

void Decoder::put(Entry entry, const Byte* p, std::size_t size, CodePoint c) {
  account_.addCharacters(1);
  if (!isRare(entry)) return append(entry);
  char ascii[4] = {static_cast<char>(codePointOf(entry))};
  switch (kindOf(entry)) {
    case Rare::malformed: return lose(SGBK_MALFORMED, p, size, c);
    case Rare::undefined: return lose(SGBK_UNDEFINED, p, size, c);
    case Rare::lacking: return lose(SGBK_NOT_IN_TARGET, p, size, c);
    case Rare::beyond: return out_->append(table_->encode(codePointOf(entry)).view());
    case Rare::markup: return putEscaped(ascii);
    case Rare::replaced:
      account_.add(SGBK_REPLACED, p, size, c);
      deEscHtml(kReplacements[codePointOf(entry)].entity, ascii);
      return putEscaped(ascii);
    case Rare::nothing: return;
  }
}

void Decoder::putCodePoint(CodePoint c, const Byte* p, std::size_t size, CodePoint told) {
  put(unicode().entryOf(c), p, size, told);
}

// A pair of bytes that could have been a character leaves a blank.
void Decoder::lose(sgbk_reason reason, const Byte* p, std::size_t size, CodePoint c) {
  account_.add(reason, p, size, c);
  if (around_.replacement != nullptr) return out_->append(around_.replacement->view());
  const bool isPair = table_->key.codes != Codes::unicode && size == 2 && reason != SGBK_MALFORMED;
  if (isPair) append(unicode().entries[0x3000]);
}

// Text that was not in the page as such: it must not become markup.
void Decoder::putEscaped(std::string_view text) {
  for (const char c : text) {
    const std::string_view escaped = !table_->key.html ? ""
                                     : c == '&'        ? "&amp;"
                                     : c == '<'        ? "&lt;"
                                     : c == '>'        ? "&gt;"
                                     : c == '"'        ? "&#34;"
                                     : c == '\''       ? "&#39;"
                                                       : "";
    if (escaped.empty()) {
      putAscii(c);
    } else if (table_->key.isMiddle && c != '"' && c != '\'') {
      append(unicode().entries[static_cast<Byte>(c) + kFullWidthShift]);
    } else {
      for (const char part : escaped) putAscii(part);
    }
  }
}

std::size_t Decoder::takeReference(std::string_view text, bool ended, const Byte* p,
                                   std::size_t unit) {
  Found found = Found::whole;
  // Most references follow one like them, as in "&nbsp;&nbsp;".
  if (before_.empty() || !text.starts_with(before_)) {
    found = findReference(text, ended, reference_);
    if (found == Found::unfinished) return 0;
    const bool isClosed = found == Found::whole && text[reference_.length - 1] == ';';
    before_ = isClosed ? text.substr(0, reference_.length) : std::string_view();
  }
  if (found == Found::whole && resolve(reference_, p, unit * reference_.length)) {
    return reference_.length;
  }
  account_.addCharacters(1);
  putAscii('&');
  return 1;
}

// False when the reference has to stay: the target has neither the character nor ASCII for it.
bool Decoder::resolve(const Reference& reference, const Byte* p, std::size_t size) {
  const CodePoint c = reference.c;
  char ascii[4] = {static_cast<char>(c)};
  if (c < 0x80) {
    // In markup it may stand in the value of an attribute.
    if (table_->key.html && (c == '"' || c == '\'')) return false;
  } else {
    const Entry entry = unicode().entryOf(c);
    const bool isLacking = isRare(entry) && kindOf(entry) <= Rare::lacking;
    if (!isLacking) {
      put(entry, p, size, c);
      return true;
    }
    const char* name = reference.name.c_str();
    if (deEscHtml(reference.name.c_str(), ascii, name) == 0 || *name != '\0') return false;
    account_.add(SGBK_REPLACED, p, size, c);
  }
  account_.addCharacters(1);
  putEscaped(ascii);
  return true;
}

std::unique_ptr<Decoder> makeDecoder(Source source, const Decoder::Surroundings& around) {
  switch (source) {
    case Source::big5: return makeBig5Decoder(around);
    case Source::gbk: return makeGbkDecoder(around);
    case Source::ucs2le: return makeUnitDecoder(around, false);
    case Source::ucs2be: return makeUnitDecoder(around, true);
    case Source::hz: return makeHzDecoder(around);
    default: return makeUtf8Decoder(around);
  }
}

}  // namespace sgbk::text
