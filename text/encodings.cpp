#include "encodings.h"

#include <string>

namespace sgbk::text {
namespace {

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

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

std::string folded(std::string_view name) {
  std::string result;
  for (const char c : name.substr(0, name.find("//"))) {
    const char l = lower(c);
    if ((l >= '0' && l <= '9') || (l >= 'a' && l <= 'z')) result += l;
  }
  return result;
}

bool isOneOf(std::string_view list, const std::string& wanted) {
  while (!list.empty()) {
    const auto word = list.substr(0, list.find(' '));
    if (folded(word) == wanted) return true;
    list.remove_prefix(word.size() + (word.size() != list.size()));
  }
  return false;
}

template <class Encoding>
std::optional<Encoding> find(std::span<const sgbk_encoding> table, std::string_view name) {
  const std::string wanted = folded(name);
  for (std::size_t i = 0; i < table.size(); ++i) {
    if (folded(table[i].name) == wanted || isOneOf(table[i].aliases, wanted))
      return static_cast<Encoding>(i);
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

}  // namespace sgbk::text
