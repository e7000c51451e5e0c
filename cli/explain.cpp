#include "explain.h"

#include <langinfo.h>
#include <locale.h>

#include <cstdio>
#include <cstring>
#include <set>

#include "conversion.h"
#include "recode.h"

namespace cli {
namespace {

// The encoding of the terminal. Without a locale, ASCII is all it would be.
std::string terminalEncoding() {
  const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
  std::string name = locale != nullptr ? nl_langinfo_l(CODESET, locale) : "UTF-8";
  if (locale != nullptr) freelocale(locale);
  return name.starts_with("ANSI_X3.4") ? "UTF-8" : name;
}

// Converts one character at a time.
class Way {
 public:
  Way(const char* from, const char* to, const char* option = nullptr)
      : converter_(openConverter(from, to)) {
    if (option != nullptr) sgbk_set(converter_.get(), option, nullptr);
  }

  std::string operator()(const std::string& character) const {
    sgbk_reset(converter_.get());
    const char* text = nullptr;
    std::size_t size = 0;
    sgbk_convert(converter_.get(), character.data(), character.size(), 1, &text, &size);
    return {text, size};
  }

  // Of the last character.
  bool isLost() const { return sgbk_lost(converter_.get()) != 0; }
  bool isReplaced() const { return sgbk_count(converter_.get())->reasons[SGBK_REPLACED] != 0; }

 private:
  Converter converter_;
};

class Explainer {
 public:
  std::string explain(unsigned codePoint, const std::string& utf8) {
    char title[32];
    std::snprintf(title, sizeof title, "U+%04X ", codePoint);
    result_ = title + utf8 + "\n";
    if (codePoint < 0x80) {
      line("ascii", "itself", "in gbk-wide " + shown(unicodeToWide_(utf8)));
      return result_;
    }
    std::set<std::string> reached;
    const std::string entry = unicodeToGbk_(utf8);
    if (unicodeToGbk_.isLost()) {
      line("unicode", "nothing", "no form, lost; kept in gb18030, utf-8 and utf-16le");
    } else if (unicodeToGbk_.isReplaced()) {
      line("unicode", entry, "ASCII that stands for it");
    } else if (entry.empty()) {
      line("unicode", "nothing", "byte-order mark");
    } else {
      line("unicode", "gbk " + shown(entry), reason(utf8, entry));
      reached.insert(entry);
    }
    explainBig5(utf8, entry);
    if (const auto cell = cellOf(utf8)) {
      const std::string unit = gbkToGbk_(*cell);
      line("gbk " + shown(*cell), "gbk " + shown(unit), reason(utf8, unit));
      reached.insert({*cell, unit});
    }
    for (const std::string& unit : reached) explainTarget(unit);
    return result_;
  }

 private:
  void line(const std::string& from, const std::string& to, const std::string& why) {
    result_ += "  " + from + " -> " + to + ": " + why + "\n";
  }

  // "CCE5 体"
  static std::string inHex(const std::string& bytes) {
    std::string hex;
    for (const char c : bytes) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(c));
      hex += digits;
    }
    return hex;
  }
  std::string shown(const std::string& gbk) const { return inHex(gbk) + " " + gbkToUnicode_(gbk); }

  // The character's own code of two bytes, if GBK has one.
  std::optional<std::string> cellOf(const std::string& utf8) const {
    auto code = toGbk_(utf8);
    if (!code || code->size() != 2) return std::nullopt;
    gbkToUnicode_(*code);
    if (gbkToUnicode_.isLost()) return std::nullopt;
    return code;
  }

  // Why the character is written as `unit`.
  std::string reason(const std::string& utf8, const std::string& unit) const {
    const auto cell = cellOf(utf8);
    if (!cell) return "nearest form, GBK has no code for the character itself";
    if (unit == *cell) return "its own code";
    return unit == gbkToGbk_(*cell) ? "simplified form" : "another form";
  }

  // entry  what the table of Unicode has for the character
  void explainBig5(const std::string& utf8, const std::string& entry) {
    auto code = toBig5_(utf8);
    if (!code || code->size() != 2) code = toHongKong_(utf8);
    if (!code || code->size() != 2) return;
    const std::string from = "big5 " + inHex(*code);
    const std::string unit = big5ToGbk_(*code);
    if (big5ToGbk_.isLost()) {
      line(from, "a blank", "no form, lost; kept in gb18030, utf-8 and utf-16le");
    } else {
      const bool isShared = unit == entry || entry.empty();
      line(from, "gbk " + shown(unit),
           isShared ? reason(utf8, unit) : "choice of this table alone");
    }
  }

  void explainTarget(const std::string& unit) {
    const std::string from = "gbk " + shown(unit);
    const std::string big5 = gbkToBig5_(unit);
    if (gbkToBig5_.isLost()) return line(from, "big5", "no form, lost");
    const auto text = fromBig5_(big5);
    const bool isOwn = text == gbkToUnicode_(unit);
    line(from, "big5 " + inHex(big5) + " " + text.value_or("?"),
         isOwn ? "its own code" : "traditional or nearest form");
    const std::string traditional = gbkToTraditional_(unit);
    if (traditional == big5) return;
    line(from, "big5 " + inHex(traditional) + " " + fromBig5_(traditional).value_or("?"),
         "with --traditional");
  }

  const Way unicodeToWide_{"utf-8", "gbk-wide"};
  const Way unicodeToGbk_{"utf-8", "gbk"};
  const Way big5ToGbk_{"big5", "gbk"};
  const Way gbkToGbk_{"gbk", "gbk"};
  const Way gbkToUnicode_{"gbk", "utf-8", "no-simplify"};
  const Way gbkToBig5_{"gbk", "big5", "no-simplify"};
  const Way gbkToTraditional_{"gbk", "big5", "traditional"};
  const Recoder toGbk_{"GB18030", "UTF-8"};
  const Recoder toBig5_{"BIG5", "UTF-8"};
  const Recoder toHongKong_{"BIG5-HKSCS", "UTF-8"};
  const Recoder fromBig5_{"UTF-8", "BIG5-HKSCS"};
  std::string result_;
};

}  // namespace

std::string explain(const std::string& text) {
  const std::string encoding = terminalEncoding();
  const auto units = Recoder("UTF-32LE", encoding.c_str())(text);
  if (!units) throw UsageError("--explain: the text is no " + encoding);
  const Recoder toUtf8("UTF-8", "UTF-32LE");
  Explainer explainer;
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
