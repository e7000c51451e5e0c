#include "encodings.h"

#include <algorithm>
#include <array>

namespace cli {
namespace {

template <class Encoding>
struct Names {
  Encoding encoding;
  std::string_view name;
  std::string_view aliases;  // separated by blanks
  std::string_view note;
};

constexpr std::array<Names<Source>, 8> kSources = {{
    {Source::automatic, "auto", "", "byte-order mark, valid UTF-8, or HZ escapes; the default"},
    {Source::big5, "big5",
     "BIG-FIVE BIGFIVE CN-BIG5 CSBIG5 CP950 MS950 WINDOWS-950 BIG5-ETEN BIG5-HKSCS "
     "BIG5-HKSCS:1999 BIG5-HKSCS:2001 BIG5-HKSCS:2004 BIG5-HKSCS:2008",
     "with the ETEN and Hong Kong rows"},
    {Source::gbk, "gbk",
     "CP936 MS936 WINDOWS-936 GB2312 EUC-CN EUCCN CN-GB CSGB2312 CSGBK GB18030 CSGB18030",
     "one and two bytes a character"},
    {Source::utf8, "utf-8", "UTF8 CSUTF8", ""},
    {Source::ucs2le, "ucs-2le", "UTF-16LE UCS-2-INTERNAL UNICODELITTLE", "little-endian"},
    {Source::ucs2be, "ucs-2be", "UTF-16BE UNICODEBIG", "big-endian"},
    {Source::ucs2, "ucs-2", "UTF-16 ISO-10646-UCS-2 CSUNICODE CSUTF16",
     "by byte-order mark, little-endian without one"},
    {Source::hz, "hz", "HZ-GB-2312 HZGB2312", ""},
}};

constexpr std::array<Names<Target>, 4> kTargets = {{
    {Target::gbk, "gbk", "CP936 GB18030", "ASCII in one byte; the default"},
    {Target::gbkWide, "gbk-wide", "", "every character in two bytes"},
    {Target::big5, "big5", "CP950", "folded to half-width"},
    {Target::utf8, "utf-8", "UTF8", "to look at"},
}};

bool isKept(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z'); }
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

std::string folded(std::string_view name) {
  std::string result;
  for (const char c : name) {
    if (isKept(lower(c))) result += lower(c);
  }
  return result;
}

bool isOneOf(std::string_view list, const std::string& wanted) {
  while (!list.empty()) {
    const auto word = list.substr(0, list.find(' '));
    if (folded(word) == wanted) return true;
    list.remove_prefix(std::min(list.size(), word.size() + 1));
  }
  return false;
}

template <class Table>
auto find(const Table& table, std::string_view name) -> std::optional<decltype(table[0].encoding)> {
  const std::string wanted = folded(name);
  for (const auto& row : table) {
    if (folded(row.name) == wanted || isOneOf(row.aliases, wanted)) return row.encoding;
  }
  return std::nullopt;
}

template <class Table>
void appendList(std::string& text, const Table& table) {
  for (const auto& row : table) {
    text.append("  ").append(row.name);
    if (!row.note.empty()) text.append(" (").append(row.note).append(")");
    if (!row.aliases.empty()) text.append("\n      ").append(row.aliases);
    text += '\n';
  }
}

template <class Table>
std::string namesOf(const Table& table) {
  std::string names;
  for (const auto& row : table) names.append(names.empty() ? "" : " ").append(row.name);
  return names;
}

}  // namespace

std::optional<Source> sourceNamed(std::string_view name) { return find(kSources, name); }
std::optional<Target> targetNamed(std::string_view name) { return find(kTargets, name); }

std::string_view nameOf(Source source) {
  return std::find_if(kSources.begin(), kSources.end(),
                      [source](const auto& row) { return row.encoding == source; })
      ->name;
}

std::string sourceNames() { return namesOf(kSources); }
std::string targetNames() { return namesOf(kTargets); }

std::string encodingList() {
  std::string text = "From:\n";
  appendList(text, kSources);
  text += "To:\n";
  appendList(text, kTargets);
  return text;
}

}  // namespace cli
