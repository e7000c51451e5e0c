// HTML entities and numeric references.

#include <charconv>
#include <optional>

#include "library_call.h"
#include "stage.h"

namespace cli {
namespace {

constexpr UINT16 kUnknownEntity = 0xFFFE;
constexpr gchar_t kUnmapped = 0x3F3F;
constexpr std::size_t kLongestName = 31;
constexpr std::size_t kLongestReference = kLongestName + 2;

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t nameLength(std::string_view text) {
  std::size_t length = 0;
  while (length < text.size() && (isLetter(text[length]) || isDigit(text[length]))) ++length;
  return length;
}

// A reference found in the text, from the "&" on.
struct Reference {
  std::size_t length;
  unsigned codePoint;
  std::string name;  // empty for a number
};

std::optional<Reference> numericReference(std::string_view text) {
  const bool isHex = text.size() > 2 && (text[2] == 'x' || text[2] == 'X');
  const char* const digits = text.data() + (isHex ? 3 : 2);
  const char* const end = text.data() + text.size();
  unsigned codePoint = 0;
  const auto [rest, error] = std::from_chars(digits, end, codePoint, isHex ? 16 : 10);
  if (rest == digits || error != std::errc()) return std::nullopt;
  const bool isClosed = rest != end && *rest == ';';
  return Reference{static_cast<std::size_t>(rest - text.data()) + isClosed, codePoint, {}};
}

std::optional<Reference> namedReference(std::string_view text) {
  const std::size_t length = nameLength(text.substr(1));
  if (length == 0 || length > kLongestName) return std::nullopt;
  std::string name(text.substr(1, length));
  const char next = text.size() > length + 1 ? text[length + 1] : '\0';
  if (next == ';') {
    const UINT16 codePoint = decodeCharEntity(name.c_str());
    if (codePoint != kUnknownEntity) return Reference{length + 2, codePoint, std::move(name)};
  }
  std::size_t matched = 0;
  const UINT16 codePoint = decodeIrregularCharEntity(name.c_str(), matched);
  if (codePoint == kUnknownEntity) return std::nullopt;
  // A longer word, or a parameter in an address: "&notify", "&copy=1".
  if (matched < length && isLetter(name[matched])) return std::nullopt;
  if (next == '=') return std::nullopt;
  name.resize(matched);
  return Reference{1 + matched, codePoint, std::move(name)};
}

class EntityStage : public Stage {
 public:
  EntityStage(EncodingConvertor& converter, Markup markup)
      : converter_(converter), markup_(markup) {}

  void apply(std::string_view text, bool lineGoesOn, std::string& out) override {
    const std::string joined = begun_.empty() ? std::string() : begun_ + std::string(text);
    if (!begun_.empty()) text = joined;
    begun_.clear();
    if (lineGoesOn) {
      // The next part may go on with the reference.
      const std::size_t last = text.rfind('&');
      if (last != std::string_view::npos && text.size() - last < kLongestReference) {
        begun_ = text.substr(last);
        text.remove_suffix(begun_.size());
      }
    }
    for (;;) {
      // No character has "&" as its second byte.
      const std::size_t plain = std::min(text.find('&'), text.size());
      out.append(text.substr(0, plain));
      text.remove_prefix(plain);
      if (text.empty()) return;
      const bool isNumeric = text.size() > 1 && text[1] == '#';
      const auto reference = isNumeric ? numericReference(text) : namedReference(text);
      const bool isResolved = reference && resolve(*reference, out);
      if (!isResolved) out += '&';
      text.remove_prefix(isResolved ? reference->length : 1);
    }
  }

 private:
  // Appends the character, or returns false when the reference has to stay: GBK has neither the
  // character nor a replacement for it, or it would break the lines.
  bool resolve(const Reference& reference, std::string& out) const {
    if (reference.codePoint < 0x80)
      return resolveAscii(static_cast<char>(reference.codePoint), out);
    if (reference.codePoint > 0xFFFF) return false;
    const gchar_t unit = converter_.getucgvalue(static_cast<UINT16>(reference.codePoint));
    if (unit != kUnmapped && isGbkCharacter(unit)) {
      appendUnit(unit, out);
      return true;
    }
    char replacement[4];
    const char* scan = reference.name.c_str();
    const int length = deEscHtml(reference.name.c_str(), replacement, scan);
    if (length == 0 || *scan != '\0') return false;
    out.append(replacement, static_cast<std::size_t>(length));
    return true;
  }

  bool resolveAscii(char c, std::string& out) const {
    if ((c < ' ' && c != '\t') || c == '\x7F') return false;
    if (markup_ == Markup::escaped) {
      // It may stand in the value of an attribute.
      if (c == '"' || c == '\'') return false;
      if (c == '&' || c == '<' || c == '>') {
        appendUnit(converter_.getucgvalue(static_cast<UINT16>(c)), out);
        return true;
      }
    }
    out += c;
    return true;
  }

  EncodingConvertor& converter_;
  const Markup markup_;
  std::string begun_;  // a reference at the end of a part
};

}  // namespace

std::unique_ptr<Stage> makeEntityStage(EncodingConvertor& converter, Markup markup) {
  return std::make_unique<EntityStage>(converter, markup);
}

}  // namespace cli
