#include <algorithm>

#include "detect.h"

namespace sgbk::text {
namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// In any mixture of capitals and small letters.
std::size_t findWord(std::string_view text, std::string_view word, std::size_t from = 0) {
  const auto found = std::search(
      text.begin() + static_cast<std::ptrdiff_t>(std::min(from, text.size())), text.end(),
      word.begin(), word.end(), [](char a, char b) { return lower(a) == b; });
  return found == text.end() ? kNowhere : static_cast<std::size_t>(found - text.begin());
}

// The value behind `attribute` and a "=" in a tag.
std::string_view valueOf(std::string_view tag, std::string_view attribute, bool inQuotesToo) {
  for (std::size_t at = 0; (at = findWord(tag, attribute, at)) != kNowhere;) {
    const auto before = tag.substr(0, at);
    const bool isQuoted = (std::count(before.begin(), before.end(), '"') +
                           std::count(before.begin(), before.end(), '\'')) %
                              2 !=
                          0;
    at += attribute.size();
    std::size_t begin = at;
    const auto skipSpaces = [&] {
      while (begin < tag.size() && isSpace(tag[begin])) ++begin;
    };
    skipSpaces();
    if ((isQuoted && !inQuotesToo) || begin == tag.size() || tag[begin] != '=') continue;
    ++begin;
    skipSpaces();
    if (begin < tag.size() && (tag[begin] == '"' || tag[begin] == '\'')) ++begin;
    std::size_t end = begin;
    while (end < tag.size() && !isSpace(tag[end]) &&
           std::string_view("\"'<>;/?").find(tag[end]) == kNowhere) {
      ++end;
    }
    // Cut off by the end of what is looked at, it may go on.
    if (end != begin && end != tag.size()) return tag.substr(begin, end - begin);
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
