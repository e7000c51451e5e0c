// The text of a page without its tags and comments. Good enough for the well-formed pages that the
// examples read; a crawler should use an HTML parser.

#ifndef SGBK_EXAMPLES_MARKUP_H
#define SGBK_EXAMPLES_MARKUP_H

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <string_view>

// True for a tag inside a line of text, where the words before and after it belong together.
inline bool isInline(std::string_view tag) {
  constexpr std::array<std::string_view, 9> names{"a",  "b",    "code",   "em", "i",
                                                  "tt", "span", "strong", "sup"};
  if (tag.starts_with('/')) tag.remove_prefix(1);
  const auto end =
      std::find_if(tag.begin(), tag.end(), [](unsigned char c) { return !isalpha(c); });
  const std::string_view name = tag.substr(0, static_cast<size_t>(end - tag.begin()));
  return std::find(names.begin(), names.end(), name) != names.end();
}

// For text in Big5 or GBK. The second byte of a character may look like markup in GBK text that is
// damaged, so a lead byte always takes the next byte with it, as the library does.
inline std::string withoutMarkup(std::string_view page) {
  std::string text;
  for (size_t i = 0; i < page.size();) {
    const auto byte = static_cast<unsigned char>(page[i]);
    if (page[i] == '<') {
      const bool comment = page.substr(i).starts_with("<!--");
      const std::string_view last = comment ? "-->" : ">";
      const size_t end = page.find(last, i + 1);
      if (end == std::string_view::npos) break;
      if (!isInline(page.substr(i + 1, end - i - 1))) text += '\n';
      i = end + last.size();
    } else {
      const size_t length = byte > 0x80 && byte < 0xFF ? 2 : 1;
      text += page.substr(i, length);
      i += length;
    }
  }
  return text;
}

#endif
