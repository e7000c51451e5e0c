#include "options.h"

#include <charconv>
#include <cstring>

#include "code_table.h"

namespace sgbk::text {
namespace {

// Lines are held until it is known whether they are too long.
constexpr std::size_t kLongestCut = 1'000'000;

constexpr sgbk_encoding kSources[] = {
    {"auto", "", "found from the text: byte-order mark, UTF-8, declaration, counts; the default"},
    {"big5",
     "BIG-FIVE BIGFIVE CN-BIG5 CSBIG5 CP950 MS950 WINDOWS-950 BIG5-ETEN BIG5-HKSCS "
     "BIG5-HKSCS:1999 BIG5-HKSCS:2001 BIG5-HKSCS:2004 BIG5-HKSCS:2008",
     "with the ETEN and Hong Kong rows"},
    {"gbk", "CP936 MS936 WINDOWS-936 GB2312 EUC-CN EUCCN CN-GB CSGB2312 CSGBK GB18030 CSGB18030",
     "with the four-byte codes of GB18030"},
    {"utf-8", "UTF8 CSUTF8", ""},
    {"ucs-2le", "UTF-16LE UCS-2-INTERNAL UNICODELITTLE", "little-endian, with surrogates"},
    {"ucs-2be", "UTF-16BE UNICODEBIG", "big-endian, with surrogates"},
    {"ucs-2", "UTF-16 ISO-10646-UCS-2 CSUNICODE CSUTF16",
     "by byte-order mark, little-endian without one"},
    {"hz", "HZ-GB-2312 HZGB2312", ""},
};

constexpr sgbk_encoding kTargets[] = {
    {"gbk", "CP936 MS936 WINDOWS-936 GB2312 EUC-CN EUCCN CN-GB CSGB2312 CSGBK",
     "ASCII in one byte; the default"},
    {"gb18030", "CSGB18030", "every character of Unicode"},
    {"gbk-wide", "", "every character in two bytes"},
    {"big5", "BIG-FIVE BIGFIVE CN-BIG5 CSBIG5 CP950 MS950 WINDOWS-950 BIG5-ETEN BIG5-HKSCS",
     "folded to half-width"},
    {"utf-8", "UTF8 CSUTF8", "every character of Unicode"},
    {"utf-16le", "UTF-16 UCS-2LE UCS-2", "little-endian, without a byte-order mark"},
};

constexpr sgbk_option kOptions[] = {
    {"entities", nullptr, 'E', "resolve &name; and &#number;"},
    {"simplify", nullptr, 'S', "traditional to simplified characters (the default)"},
    {"no-simplify", nullptr, 0, "keep traditional characters (from gbk and hz)"},
    {"traditional", nullptr, 0, "prefer traditional forms (to big5)"},
    {"half-width", nullptr, 'W', "full-width letters, digits and punctuation to ASCII"},
    {"fold-case", nullptr, 'C', "upper case to lower case"},
    {"trim-punct", nullptr, 'P', "thin out blanks, decoration and long runs of punctuation"},
    {"html", nullptr, 0, "-W and --declare, but full-width & < > become references"},
    {"declare", nullptr, 0, "make pages declare the encoding they are written in"},
    {"truncate", "N", 0, "cut lines of more than N bytes of GBK, ending them with ..."},
    {"replace", "TEXT", 0, "write TEXT, in UTF-8, for each lost character"},
    {"strict", nullptr, 0, "stop before the line of the first loss"},
};

constexpr struct {
  const char* name;
  bool Options::*flag;
  bool meaning;
} kFlags[] = {
    {"entities", &Options::entities, true},     {"simplify", &Options::simplify, true},
    {"no-simplify", &Options::simplify, false}, {"traditional", &Options::traditional, true},
    {"half-width", &Options::halfWidth, true},  {"fold-case", &Options::foldCase, true},
    {"trim-punct", &Options::trim, true},       {"html", &Options::html, true},
    {"declare", &Options::declare, true},       {"strict", &Options::strict, true},
    {"losses", &Options::losses, true},
};

[[noreturn]] void refuse(const std::string& sentence) { throw Failure{SGBK_USAGE, sentence}; }

std::size_t lengthFrom(const std::string& name, const char* text) {
  std::size_t number = 0;
  const char* const end = text + std::strlen(text);
  const auto [rest, error] = std::from_chars(text, end, number);
  if (rest != end || error != std::errc() || number < 1 || number > kLongestCut) {
    refuse(name + ": not a number from 1 to " + std::to_string(kLongestCut) + ": '" + text + "'");
  }
  return number;
}

// Of a name, what tells it from others; of a list of names, the blanks between them as well.
std::string folded(std::string_view names, bool isList) {
  std::string result;
  for (const char c : names.substr(0, names.find("//"))) {
    if (isLetter(c) || isDigit(c) || (isList && c == ' ')) result += lower(c);
  }
  return result;
}

template <class Encoding>
std::optional<Encoding> find(std::span<const sgbk_encoding> table, std::string_view name) {
  const std::string wanted = folded(name, false);
  for (std::size_t i = 0; !wanted.empty() && i < table.size(); ++i) {
    const std::string names = std::string(" ") + table[i].name + ' ' + table[i].aliases + ' ';
    if (folded(names, true).find(' ' + wanted + ' ') != names.npos) return static_cast<Encoding>(i);
  }
  return std::nullopt;
}

}  // namespace

std::optional<Source> sourceNamed(std::string_view name) { return find<Source>(kSources, name); }
std::optional<Target> targetNamed(std::string_view name) { return find<Target>(kTargets, name); }
const char* nameOf(Source source) { return kSources[static_cast<std::size_t>(source)].name; }
const char* nameOf(Target target) { return kTargets[static_cast<std::size_t>(target)].name; }
std::span<const sgbk_encoding> sources() { return kSources; }
std::span<const sgbk_encoding> targets() { return kTargets; }

std::span<const sgbk_option> optionTable() { return kOptions; }

void setOption(Options& options, const std::string& name, const char* value) {
  for (const auto& row : kFlags) {
    if (name != row.name) continue;
    const std::string given = value == nullptr ? "1" : value;
    if (given != "0" && given != "1") refuse(name + " takes no value: '" + given + "'");
    options.*row.flag = (given == "1") == row.meaning;
    return;
  }
  if (name != "truncate" && name != "replace") refuse("unknown option '" + name + "'");
  if (value == nullptr) refuse(name + " needs a value");
  if (name == "truncate") {
    options.truncate = lengthFrom(name, value);
  } else {
    options.replace = value;
  }
}

void checkTogether(const Options& o, Source source) {
  if (!o.simplify && source != Source::gbk && source != Source::hz) {
    refuse("no-simplify works from gbk and hz only: the other tables simplify by themselves");
  }
  if (o.target == Target::gbkWide && (o.halfWidth || o.html || o.declare)) {
    refuse("gbk-wide has no half-width characters, so no half-width, html or declare");
  }
  if (o.traditional && o.target != Target::big5) refuse("traditional works to big5 only");
  if (o.traditional && !libraryTables().hasTraditional) {
    refuse("traditional: the table library that is loaded is not the one that this was built with");
  }
}

}  // namespace sgbk::text
