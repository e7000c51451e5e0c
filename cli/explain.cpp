#include "explain.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <cerrno>
#include <cstring>
#include <set>

#include "conversion.h"
#include "message.h"

namespace cli {
namespace {

// The C library's converter, for what is not the library's matter: the terminal's encoding, and the
// code of a character by itself.
class Recoder {
 public:
  Recoder(const char* to, const char* from) : converter_(iconv_open(to, from)) {
    if (converter_ != reinterpret_cast<iconv_t>(-1)) return;
    throw std::runtime_error(std::string("the C library cannot convert ") + from + " to " + to);
  }
  ~Recoder() { iconv_close(converter_); }
  Recoder(const Recoder&) = delete;
  Recoder& operator=(const Recoder&) = delete;

  // Empty when `text` is not valid or holds a character that the other encoding lacks.
  std::string operator()(std::string text) const {
    iconv(converter_, nullptr, nullptr, nullptr, nullptr);
    std::string result(4 * text.size() + 16, '\0');
    char *in = text.data(), *out = result.data();
    std::size_t left = text.size(), room = result.size();
    if (iconv(converter_, &in, &left, &out, &room) != 0) return {};
    result.resize(result.size() - room);
    return result;
  }

 private:
  iconv_t converter_;
};

// Converts one character at a time.
class Way {
 public:
  Way(const char* from, const char* to) : converter_(from, to) {}
  Way(const char* from, const char* to, const char* option) : Way(from, to) {
    converter_.set(option);
  }

  std::string operator()(const std::string& character) {
    sgbk_reset(converter_.get());
    return converter_.convert(character.data(), character.size(), true);
  }

  // Of the last character.
  bool isLost() const { return sgbk_lost(converter_.get()) != 0; }
  bool isReplaced() const { return sgbk_count(converter_.get())->reasons[SGBK_REPLACED] != 0; }

 private:
  sgbk::Converter converter_;
};

constexpr char kLost[] = "no form, lost; kept in gb18030, utf-8 and utf-16le";

class Explainer {
 public:
  std::string explain(const std::string& character) {
    result_.clear();
    std::set<std::string> reached;
    const std::string entry = unicodeToGbk_(character);
    if (unicodeToGbk_.isLost()) {
      line("unicode", "nothing", kLost);
    } else if (unicodeToGbk_.isReplaced()) {
      line("unicode", entry, "ASCII that stands for it");
    } else if (entry.empty()) {
      line("unicode", "nothing", "byte-order mark");
    } else {
      line("unicode", "gbk " + shown(entry), reason(character, entry));
      reached.insert(entry);
    }
    explainBig5(character, entry);
    if (const std::string own = ownCode(character); !own.empty()) {
      const std::string code = gbkToGbk_(own);
      line("gbk " + shown(own), "gbk " + shown(code), reason(character, code));
      reached.insert({own, code});
    }
    for (const std::string& code : reached) explainTarget(code);
    return result_;
  }

 private:
  void line(const std::string& from, const std::string& to, const std::string& why) {
    result_ += "  " + from + " -> " + to + ": " + why + "\n";
  }

  std::string shown(const std::string& gbk) { return inHex(gbk, "") + " " + gbkToUnicode_(gbk); }
  std::string shownBig5(const std::string& big5) {
    return "big5 " + inHex(big5, "") + " " + fromBig5_(big5);
  }

  // The character's own code of two bytes, empty if GBK has none.
  std::string ownCode(const std::string& character) {
    const std::string code = toGbk_(character);
    gbkToUnicode_(code);
    return code.size() != 2 || gbkToUnicode_.isLost() ? "" : code;
  }

  // Why the character is written as `code`.
  std::string reason(const std::string& character, const std::string& code) {
    const std::string own = ownCode(character);
    if (code == own || code == character) return "its own code";
    if (own.empty()) return "nearest form, GBK has no code for the character itself";
    return code == gbkToGbk_(own) ? "simplified form" : "another form";
  }

  // entry  what the table of Unicode has for the character
  void explainBig5(const std::string& character, const std::string& entry) {
    std::string own = toBig5_(character);
    if (own.size() != 2) own = toHongKong_(character);
    if (own.size() != 2) return;
    const std::string from = "big5 " + inHex(own, "");
    const std::string code = big5ToGbk_(own);
    if (big5ToGbk_.isLost()) return line(from, "a blank", kLost);
    const bool isShared = code == entry || entry.empty();
    line(from, "gbk " + shown(code),
         isShared ? reason(character, code) : "choice of this table alone");
  }

  void explainTarget(const std::string& code) {
    const std::string from = "gbk " + shown(code);
    const std::string big5 = gbkToBig5_(code);
    if (gbkToBig5_.isLost()) return line(from, "a blank in big5", "no form, lost");
    const bool isOwn = fromBig5_(big5) == gbkToUnicode_(code);
    line(from, shownBig5(big5), isOwn ? "its own code" : "traditional or nearest form");
    const std::string traditional = gbkToTraditional_(code);
    if (traditional != big5) line(from, shownBig5(traditional), "with --traditional");
  }

  Way unicodeToGbk_{"utf-8", "gbk"};
  Way big5ToGbk_{"big5", "gbk"};
  Way gbkToGbk_{"gbk", "gbk"};
  Way gbkToUnicode_{"gbk", "utf-8", "no-simplify"};
  Way gbkToBig5_{"gbk", "big5", "no-simplify"};
  Way gbkToTraditional_{"gbk", "big5", "traditional"};
  const Recoder toGbk_{"GB18030", "UTF-8"};
  const Recoder toBig5_{"BIG5", "UTF-8"};
  const Recoder toHongKong_{"BIG5-HKSCS", "UTF-8"};
  const Recoder fromBig5_{"UTF-8", "BIG5-HKSCS"};
  std::string result_;
};

// The encoding of the terminal. Without a locale, ASCII is all it would be.
std::string terminalEncoding() {
  setlocale(LC_CTYPE, "");
  const std::string name = nl_langinfo(CODESET);
  return name.starts_with("ANSI_X3.4") ? "UTF-8" : name;
}

}  // namespace

std::string explain(const std::string& text) {
  const std::string encoding = terminalEncoding();
  const std::string units = Recoder("UTF-32LE", encoding.c_str())(text);
  if (units.empty() && !text.empty()) throw UsageError("--explain: the text is no " + encoding);
  const Recoder toUtf8("UTF-8", "UTF-32LE");
  Explainer explainer;
  std::string result;
  for (std::size_t i = 0; i < units.size(); i += 4) {
    std::uint32_t codePoint;
    std::memcpy(&codePoint, &units[i], sizeof codePoint);
    const std::string character = toUtf8(units.substr(i, 4));
    result += codePointName(codePoint) + " " + character + "\n" + explainer.explain(character);
  }
  const std::string shown = Recoder((encoding + "//TRANSLIT").c_str(), "UTF-8")(result);
  return shown.empty() ? result : shown;
}

}  // namespace cli
