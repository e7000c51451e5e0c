#include "options.h"

#include <charconv>
#include <cstring>

#include "library_tables.h"

namespace sgbk::text {
namespace {

// Lines are held until it is known whether they are too long.
constexpr std::size_t kLongestCut = 1'000'000;

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

}  // namespace

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

void checkTogether(const Options& o, Source source, Target target) {
  if (!o.simplify && source != Source::gbk && source != Source::hz) {
    refuse("no-simplify works from gbk and hz only: the other tables simplify by themselves");
  }
  if (target == Target::gbkWide && (o.halfWidth || o.html || o.declare)) {
    refuse("gbk-wide has no half-width characters, so no half-width, html or declare");
  }
  if (o.traditional && target != Target::big5) refuse("traditional works to big5 only");
  if (o.traditional && !libraryTables().hasTraditional) {
    refuse("traditional: the table library that is loaded is not the one that this was built with");
  }
}

}  // namespace sgbk::text
