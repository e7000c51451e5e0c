#include "texts.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "peers.h"

namespace sgbk_bench {
namespace {

bool startsCharacter(char c) { return (c & 0xC0) != 0x80; }

std::vector<std::string> readPages(Script script) {
  const std::string_view ending = script == Script::traditional ? ".zh-tw.html" : ".zh-cn.html";
  std::vector<std::filesystem::path> names;
  for (const auto& entry : std::filesystem::directory_iterator("/usr/share/debian-reference")) {
    if (entry.path().string().ends_with(ending)) names.push_back(entry.path());
  }
  std::ranges::sort(names);
  std::vector<std::string> pages;
  for (const auto& name : names) {
    std::ifstream file(name, std::ios::binary);
    pages.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  if (pages.empty()) throw std::runtime_error("no pages of debian-reference");
  return pages;
}

// The first `limit` characters of UTF-8 text.
std::string firstCharacters(const std::string& text, std::size_t limit) {
  std::size_t end = 0;
  for (std::size_t taken = 0; end < text.size(); ++end) {
    if (startsCharacter(text[end]) && taken++ == limit) break;
  }
  return text.substr(0, end);
}

std::string withoutTags(const std::string& html) {
  std::string text;
  bool inTag = false;
  for (const char c : html) {
    if (c == '<') inTag = true;
    if (!inTag) text += c;
    if (c == '>') inTag = false;
  }
  return text;
}

// The clauses with less than 28 % ASCII; together they have some 6 %. A line end or a full-width
// stop ends a clause.
std::string mostlyIdeographs(const std::string& text) {
  constexpr std::string_view kStops[] = {"\n", "。", "，", "；", "：", "、", "！", "？"};
  std::string kept;
  std::size_t begin = 0;
  std::size_t ascii = 0;
  std::size_t characters = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (!startsCharacter(text[at])) continue;
    ++characters;
    if ((text[at] & 0x80) == 0) ++ascii;
    for (const std::string_view stop : kStops) {
      if (text.compare(at, stop.size(), stop) != 0) continue;
      const std::size_t end = at + stop.size();
      if (100 * ascii < 28 * characters) kept.append(text, begin, end - begin);
      begin = end;
      ascii = characters = 0;
    }
  }
  return kept;
}

// `utf8` without the characters that `encoding` lacks.
std::string writableIn(const std::string& encoding, const std::string& utf8) {
  return recode("UTF-8", encoding, recode(encoding, "UTF-8", utf8));
}

}  // namespace

Source::Source(Kind kind, Script script, std::size_t limit) {
  const std::vector<std::string> pages = readPages(script);
  std::string text;
  for (const std::string& page : pages) {
    text += kind == Kind::pages ? firstCharacters(page, limit / pages.size())
                                : mostlyIdeographs(withoutTags(page));
  }
  text = firstCharacters(text, limit);
  utf8_ = script == Script::traditional ? writableIn("GBK", writableIn("BIG5", text))
                                        : writableIn("GB2312", text);
  characters_ = static_cast<std::size_t>(std::ranges::count_if(utf8_, startsCharacter));
}

Text Source::in(const std::string& encoding) const {
  if (encoding == "UTF-8") return {utf8_, characters_};
  if (encoding == "HZ") {
    std::string hz(4 * utf8_.size(), '\0');
    hz.resize(IcuConverter("UTF-8", "HZ")(utf8_, hz));
    return {hz, characters_};
  }
  return {recode(encoding, "UTF-8", utf8_), characters_};
}

}  // namespace sgbk_bench
