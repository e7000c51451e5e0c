#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <sgbk/text.hpp>

#include "message.h"
#include "options.h"

namespace cli {
namespace {

constexpr char kLost[] = "no form, lost; kept in gb18030, utf-8 and utf-16le";

// By the C library's converter, for what is not the library's matter: the terminal's encoding, and
// the code of a character by itself. Empty when `text` is not valid or holds a character that the
// other encoding lacks.
std::string recoded(std::string text, const std::string& from, const std::string& to) {
  static std::map<std::string, std::shared_ptr<void>> converters;
  const auto [known, isNew] = converters.try_emplace(from + " to " + to);
  if (isNew) known->second.reset(iconv_open(to.c_str(), from.c_str()), iconv_close);
  const iconv_t converter = known->second.get();
  if (converter == reinterpret_cast<iconv_t>(-1)) {
    throw std::runtime_error("the C library cannot convert " + known->first);
  }
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  std::string result(4 * text.size() + 16, '\0');
  char *in = text.data(), *out = result.data();
  std::size_t left = text.size(), room = result.size();
  const bool isWhole = iconv(converter, &in, &left, &out, &room) == 0;
  return isWhole ? result.substr(0, result.size() - room) : "";
}

// What the library makes of a character.
struct Form {
  std::string text;
  bool isLost, isReplaced;
};

Form formOf(const std::string& character, const char* from, const char* to,
            const char* option = "simplify") {
  sgbk::Converter converter(from, to);
  converter.set(option);
  const std::string text = converter.convert(character.data(), character.size(), true);
  return {text, sgbk_lost(converter.get()) != 0,
          sgbk_count(converter.get())->reasons[SGBK_REPLACED] != 0};
}

Form gbkToUnicode(const std::string& gbk) { return formOf(gbk, "gbk", "utf-8", "no-simplify"); }

// The code of a character and the character itself.
std::string shown(const std::string& gbk) {
  return "gbk " + inHex(gbk, "") + " " + gbkToUnicode(gbk).text;
}
std::string shownBig5(const std::string& big5) {
  return "big5 " + inHex(big5, "") + " " + recoded(big5, "BIG5-HKSCS", "UTF-8");
}

std::string line(const std::string& from, const std::string& to, const std::string& why) {
  return "  " + from + " -> " + to + ": " + why + "\n";
}

// The character's own code of two bytes, empty if GBK has none.
std::string ownCode(const std::string& character) {
  const std::string code = recoded(character, "UTF-8", "GB18030");
  return code.size() != 2 || gbkToUnicode(code).isLost ? "" : code;
}

// Why the character is written as `code`.
std::string reason(const std::string& character, const std::string& code) {
  const std::string own = ownCode(character);
  if (code == own || code == character) return "its own code";
  if (own.empty()) return "nearest form, GBK has no code for the character itself";
  return code == formOf(own, "gbk", "gbk").text ? "simplified form" : "another form";
}

// entry  what the table of Unicode has for the character
std::string fromBig5(const std::string& character, const std::string& entry) {
  std::string own = recoded(character, "UTF-8", "BIG5");
  if (own.size() != 2) own = recoded(character, "UTF-8", "BIG5-HKSCS");
  if (own.size() != 2) return "";
  const std::string from = "big5 " + inHex(own, "");
  const Form code = formOf(own, "big5", "gbk");
  if (code.isLost) return line(from, "a blank", kLost);
  const bool isShared = code.text == entry || entry.empty();
  return line(from, shown(code.text),
              isShared ? reason(character, code.text) : "choice of this table alone");
}

std::string toBig5(const std::string& code) {
  const std::string from = shown(code);
  const Form big5 = formOf(code, "gbk", "big5", "no-simplify");
  if (big5.isLost) return line(from, "a blank in big5", "no form, lost");
  const bool isOwn = recoded(big5.text, "BIG5-HKSCS", "UTF-8") == gbkToUnicode(code).text;
  const std::string lines =
      line(from, shownBig5(big5.text), isOwn ? "its own code" : "traditional or nearest form");
  const std::string traditional = formOf(code, "gbk", "big5", "traditional").text;
  if (traditional == big5.text) return lines;
  return lines + line(from, shownBig5(traditional), "with --traditional");
}

std::string waysOf(const std::string& character) {
  std::string lines;
  std::set<std::string> reached;
  const auto [entry, isLost, isReplaced] = formOf(character, "utf-8", "gbk");
  if (isLost) {
    lines = line("unicode", "nothing", kLost);
  } else if (isReplaced) {
    lines = line("unicode", entry, "ASCII that stands for it");
  } else if (entry.empty()) {
    lines = line("unicode", "nothing", "byte-order mark");
  } else {
    lines = line("unicode", shown(entry), reason(character, entry));
    reached.insert(entry);
  }
  lines += fromBig5(character, entry);
  if (const std::string own = ownCode(character); !own.empty()) {
    const std::string code = formOf(own, "gbk", "gbk").text;
    lines += line(shown(own), shown(code), reason(character, code));
    reached.insert({own, code});
  }
  for (const std::string& code : reached) lines += toBig5(code);
  return lines;
}

}  // namespace

std::string explanation(const std::string& text) {
  setlocale(LC_CTYPE, "");
  std::string encoding = nl_langinfo(CODESET);
  // Without a locale, ASCII is all that the terminal would show.
  if (encoding.starts_with("ANSI_X3.4")) encoding = "UTF-8";
  const std::string units = recoded(text, encoding, "UTF-32LE");
  if (units.empty() && !text.empty()) throw UsageError("--explain: the text is no " + encoding);
  std::string result;
  for (std::size_t i = 0; i < units.size(); i += 4) {
    std::uint32_t codePoint;
    std::memcpy(&codePoint, &units[i], sizeof codePoint);
    const std::string character = recoded(units.substr(i, 4), "UTF-32LE", "UTF-8");
    result += codePointName(codePoint) + " " + character + "\n" + waysOf(character);
  }
  const std::string shown = recoded(result, "UTF-8", encoding + "//TRANSLIT");
  return shown.empty() ? result : shown;
}

}  // namespace cli
