#include <charconv>

#include "decoder.h"
#include "sgbk/support.h"

namespace sgbk::text {
namespace {

constexpr UINT16 kUnknownEntity = 0xFFFE;
constexpr CodePoint kLastCodePoint = 0x10FFFF;

// A control character, or none at all, would not be what the page means.
bool isNameable(CodePoint c) {
  const bool isControl = (c < ' ' && c != '\t') || (c >= 0x7F && c < 0xA0);
  return !isControl && !isSurrogate(c) && c != kByteOrderMark && c <= kLastCodePoint;
}

bool isNumber(std::string_view text, Reference& found) {
  const bool isHex = text.size() > 2 && (text[2] == 'x' || text[2] == 'X');
  const char* const digits = text.data() + (isHex ? 3 : 2);
  const char* const end = text.data() + text.size();
  if (digits > end) return false;
  const auto [rest, error] = std::from_chars(digits, end, found.c, isHex ? 16 : 10);
  if (rest == digits || error != std::errc()) return false;
  const bool isClosed = rest != end && *rest == ';';
  found.length = static_cast<std::size_t>(rest - text.data()) + isClosed;
  found.name.clear();
  return true;
}

bool isName(std::string_view text, std::size_t length, Reference& found) {
  found.name = text.substr(1, length);
  const char next = text.size() > length + 1 ? text[length + 1] : '\0';
  if (next == ';') {
    found.c = decodeCharEntity(found.name.c_str());
    found.length = length + 2;
    if (found.c != kUnknownEntity) return true;
  }
  std::size_t matched = 0;
  found.c = decodeIrregularCharEntity(found.name.c_str(), matched);
  // A longer word, or a parameter in an address: "&notify", "&copy=1".
  if (found.c == kUnknownEntity || next == '=') return false;
  if (matched < length && isLetter(found.name[matched])) return false;
  found.name.resize(matched);
  found.length = 1 + matched;
  return true;
}

}  // namespace

Found findReference(std::string_view text, bool ended, Reference& found) {
  const bool isAlone = text.size() > 1 && text[1] != '#' && !isLetter(text[1]) && !isDigit(text[1]);
  if (isAlone) return Found::none;
  text = text.substr(0, kLongestReference);
  const std::size_t start = text.size() > 1 && text[1] == '#' ? 2 : 1;
  std::size_t end = start;
  while (end < text.size() && (isDigit(text[end]) || isLetter(text[end]))) ++end;
  const bool mayGoOn = end == text.size();
  if (mayGoOn && text.size() == kLongestReference) return Found::none;
  if (mayGoOn && !ended) return Found::unfinished;
  const bool isFound =
      start == 2 ? isNumber(text, found) : end != start && isName(text, end - start, found);
  return isFound && isNameable(found.c) ? Found::whole : Found::none;
}

}  // namespace sgbk::text
