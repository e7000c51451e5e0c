#include <algorithm>

#include "detect.h"

namespace sgbk::text {
namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

constexpr std::string_view kSpaces = " \t\n\v\f\r";
constexpr std::string_view kValueEnds = " \t\n\v\f\r\"'<>;/?";

// In any mixture of upper and lower case.
std::size_t findWord(std::string_view text, std::string_view word, std::size_t from = 0) {
  const auto found = std::search(
      text.begin() + static_cast<std::ptrdiff_t>(std::min(from, text.size())), text.end(),
      word.begin(), word.end(), [](char a, char b) { return lower(a) == b; });
  return found == text.end() ? kNowhere : static_cast<std::size_t>(found - text.begin());
}

// The value behind `attribute` and a "=" in a tag.
std::string_view valueOf(std::string_view tag, std::string_view attribute, bool inQuotesToo) {
  const auto isQuote = [](char c) { return c == '"' || c == '\''; };
  for (std::size_t at = 0; (at = findWord(tag, attribute, at)) != kNowhere;) {
    const bool isQuoted = std::ranges::count_if(tag.substr(0, at), isQuote) % 2 != 0;
    at += attribute.size();
    const std::size_t equals = tag.find_first_not_of(kSpaces, at);
    if ((isQuoted && !inQuotesToo) || equals == kNowhere || tag[equals] != '=') continue;
    std::size_t begin = tag.find_first_not_of(kSpaces, equals + 1);
    if (begin == kNowhere) break;
    begin += isQuote(tag[begin]);
    const std::size_t end = tag.find_first_of(kValueEnds, begin);
    // Cut off by the end of what is looked at, it may go on.
    if (end != begin && end != kNowhere) return tag.substr(begin, end - begin);
  }
  return {};
}

// The next encoding that is declared from `from` on.
std::string_view nextDeclared(std::string_view head, std::size_t from) {
  for (std::size_t at = from; (at = head.find('<', at)) != kNowhere; ++at) {
    const std::string_view rest = head.substr(at);
    if (rest.starts_with("<!--")) {
      at = head.find("-->", at);
      if (at == kNowhere) break;
      continue;
    }
    const std::size_t close = rest.find('>');
    const std::string_view tag = rest.substr(0, close == kNowhere ? close : close + 1);
    std::string_view value;
    if (at == 0 && tag.starts_with("<?xml")) {
      value = valueOf(tag, "encoding", false);
    } else if (findWord(tag.substr(0, 5), "<meta") == 0) {
      value = valueOf(tag, "charset", findWord(tag, "http-equiv") != kNowhere);
    }
    if (!value.empty()) return value;
  }
  return {};
}

}  // namespace

std::string_view declaredEncoding(std::string_view head) { return nextDeclared(head, 0); }

std::string withDeclared(std::string_view head, std::string_view name) {
  std::string result;
  std::size_t copied = 0;
  for (;;) {
    const std::string_view value = nextDeclared(head, copied);
    if (value.empty()) break;
    const auto begin = static_cast<std::size_t>(value.data() - head.data());
    result.append(head.substr(copied, begin - copied)).append(name);
    copied = begin + value.size();
  }
  return result.append(head.substr(copied));
}

}  // namespace sgbk::text
