#include "explain.h"

#include <langinfo.h>
#include <locale.h>

#include <cstdio>
#include <set>

#include "library_call.h"
#include "options.h"
#include "recode.h"
#include "stage.h"

namespace cli {
namespace {

constexpr gchar_t kUnmapped = 0x3F3F;
constexpr std::string_view kWhiteSquare = "\xA1\xBC";

// The encoding of the terminal. Without a locale, ASCII is all it would be.
std::string terminalEncoding() {
  const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
  std::string name = locale != nullptr ? nl_langinfo_l(CODESET, locale) : "UTF-8";
  if (locale != nullptr) freelocale(locale);
  return name.starts_with("ANSI_X3.4") ? "UTF-8" : name;
}

std::string inHex(std::string_view bytes) {
  std::string hex;
  for (const char c : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", static_cast<Byte>(c));
    hex += digits;
  }
  return hex;
}

std::string bytesOfUnit(gchar_t unit) {
  std::string bytes;
  appendUnit(unit, bytes);
  return bytes;
}

class Explainer {
 public:
  explicit Explainer(EncodingConvertor& converter)
      : converter_(converter), toText_(makeUtf8Stage()) {}

  std::string explain(unsigned codePoint, const std::string& utf8) {
    char title[32];
    std::snprintf(title, sizeof title, "U+%04X ", codePoint);
    result_ = title + utf8 + "\n";
    if (codePoint < 0x80) {
      line("ascii", "itself", "in gbk-wide " + shown(converter_.getucgvalue(asUnit(codePoint))));
      return result_;
    }
    std::set<gchar_t> reached;
    const gchar_t entry =
        codePoint > 0xFFFF ? kUnmapped : converter_.getucgvalue(asUnit(codePoint));
    if (codePoint == 0xFEFF) {
      line("unicode", "nothing", "byte-order mark");
    } else if (entry == kUnmapped) {
      line("unicode", "nothing", codePoint > 0xFFFF ? "beyond the table, lost" : "no form, lost");
    } else {
      line("unicode", "gbk " + shown(entry), reason(utf8, entry));
      reached.insert(entry);
    }
    explainBig5(utf8, entry);
    if (const auto cell = cellOf(utf8)) {
      const gchar_t unit = simplified(&EncodingConvertor::t2sgbk, bytesOfUnit(*cell));
      line("gbk " + shown(*cell), "gbk " + shown(unit), reason(utf8, unit));
      reached.insert({*cell, unit});
    }
    for (const gchar_t unit : reached) explainTarget(unit);
    return result_;
  }

 private:
  static UINT16 asUnit(unsigned codePoint) { return static_cast<UINT16>(codePoint); }

  void line(const std::string& from, const std::string& to, const std::string& why) {
    result_ += "  " + from + " -> " + to + ": " + why + "\n";
  }

  std::string shown(gchar_t unit) {
    std::string text = inHex(bytesOfUnit(unit));
    if (!isGbkCharacter(unit)) return text;
    text += ' ';
    toText_->apply(bytesOfUnit(unit), false, text);
    return text;
  }

  // The character's own code of two bytes, if GBK has one.
  std::optional<gchar_t> cellOf(const std::string& utf8) const {
    const auto code = toGbk_(utf8);
    if (!code || code->size() != 2 || !isGbkCharacter(unitAt(code->data()))) return std::nullopt;
    return unitAt(code->data());
  }

  gchar_t simplified(StreamConversion conversion, const std::string& code) {
    std::string unit;
    appendConverted(converter_, conversion, code, unit);
    return unit.size() == 2 ? unitAt(unit.data()) : CHINESE_SPACE_CHAR;
  }

  // Why the character is written as `unit`.
  std::string reason(const std::string& utf8, gchar_t unit) {
    const auto cell = cellOf(utf8);
    if (!cell) return "nearest form, GBK has no code for the character itself";
    if (unit == *cell) return "its own code";
    if (unit == simplified(&EncodingConvertor::t2sgbk, bytesOfUnit(*cell)))
      return "simplified form";
    return "another form";
  }

  // entry  what the table of Unicode has for the character
  void explainBig5(const std::string& utf8, gchar_t entry) {
    auto code = toBig5_(utf8);
    if (!code || code->size() != 2) code = toHongKong_(utf8);
    if (!code || code->size() != 2) return;
    const std::string from = "big5 " + inHex(*code);
    const gchar_t unit = simplified(&EncodingConvertor::b52sgbk, *code);
    if (unit == CHINESE_SPACE_CHAR && entry != CHINESE_SPACE_CHAR) {
      line(from, "a blank", "no form, lost");
    } else {
      const bool isShared = unit == entry || entry == kUnmapped;
      line(from, "gbk " + shown(unit),
           isShared ? reason(utf8, unit) : "choice of this table alone");
    }
  }

  void explainTarget(gchar_t unit) {
    const std::string from = "gbk " + shown(unit);
    char code[8];
    const int size = converter_.gchar2big5(bytesOfUnit(unit).c_str(), code, sizeof code, false);
    const std::string big5(code, static_cast<std::size_t>(size));
    if (size == 1) return line(from, "big5 " + inHex(big5), "folded to ASCII");
    std::string utf8;
    toText_->apply(bytesOfUnit(unit), false, utf8);
    if (big5 == kWhiteSquare && toBig5_(utf8) != big5) {
      return line(from, "big5 " + inHex(big5), "no form, lost, a white square stands for it");
    }
    const auto text = fromBig5_(big5);
    line(from, "big5 " + inHex(big5) + " " + text.value_or("?"),
         text == utf8 ? "its own code" : "traditional or nearest form");
  }

  EncodingConvertor& converter_;
  const std::unique_ptr<Stage> toText_;
  const Recoder toGbk_{"GB18030", "UTF-8"};
  const Recoder toBig5_{"BIG5", "UTF-8"};
  const Recoder toHongKong_{"BIG5-HKSCS", "UTF-8"};
  const Recoder fromBig5_{"UTF-8", "BIG5-HKSCS"};
  std::string result_;
};

}  // namespace

std::string explain(EncodingConvertor& converter, const std::string& text) {
  const std::string encoding = terminalEncoding();
  const auto units = Recoder("UTF-32LE", encoding.c_str())(text);
  if (!units) throw UsageError("--explain: the text is no " + encoding);
  const Recoder toUtf8("UTF-8", "UTF-32LE");
  Explainer explainer(converter);
  std::string result;
  for (std::size_t i = 0; i < units->size(); i += 4) {
    const std::string unit = units->substr(i, 4);
    unsigned codePoint;
    std::memcpy(&codePoint, unit.data(), sizeof codePoint);
    result += explainer.explain(codePoint, toUtf8(unit).value_or(""));
  }
  return Recoder((encoding + "//TRANSLIT").c_str(), "UTF-8")(result).value_or(result);
}

}  // namespace cli
