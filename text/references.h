// Character references of HTML: &name; &#number; and the names that pages write without the ";".

#ifndef SGBK_TEXT_REFERENCES_H
#define SGBK_TEXT_REFERENCES_H

#include <cstddef>
#include <string>
#include <string_view>

#include "code_points.h"

namespace sgbk::text {

// Bytes from "&" on; what is longer is text.
inline constexpr std::size_t kLongestReference = 33;

struct Reference {
  std::size_t length;  // with "&" and ";"
  CodePoint c;
  std::string name;  // empty for a number
};

enum class Found { none, unfinished, whole };

// Looks for a reference at the beginning of `text`, which is a "&".
// ended  nothing follows `text`; otherwise what may go on is unfinished
Found findReference(std::string_view text, bool ended, Reference& found);

}  // namespace sgbk::text

#endif
