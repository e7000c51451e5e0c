#include "line_ends.h"

namespace cli {

bool LineEnds::isWideLineFeed(std::string_view text, std::size_t at) const {
  const bool little = source_ == Source::ucs2le;
  return text[at] == (little ? '\n' : '\0') && text[at + 1] == (little ? '\0' : '\n');
}

std::size_t LineEnds::behindFirst(std::string_view text, std::size_t from) const {
  if (!isWide()) {
    const std::size_t at = text.find('\n', from);
    return at == std::string_view::npos ? 0 : at + 1;
  }
  for (std::size_t at = text.find('\n', from / 2 * 2); at < text.size() / 2 * 2;) {
    const std::size_t behind = at / 2 * 2 + 2;
    if (isWideLineFeed(text, behind - 2)) return behind;
    at = text.find('\n', behind);
  }
  return 0;
}

std::size_t LineEnds::behindLast(std::string_view text, std::size_t from) const {
  if (!isWide()) {
    const std::size_t at = text.substr(from).rfind('\n');
    return at == std::string_view::npos ? 0 : from + at + 1;
  }
  for (std::size_t behind = text.size() / 2 * 2; behind > from; behind -= 2) {
    if (isWideLineFeed(text, behind - 2)) return behind;
  }
  return 0;
}

std::size_t LineEnds::count(std::string_view text) const {
  std::size_t lines = 0;
  for (std::size_t at = 0; (at = behindFirst(text, at)) != 0;) ++lines;
  return lines;
}

}  // namespace cli
