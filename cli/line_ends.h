// Where the lines of a text end: at a line feed, of two bytes in UCS-2.

#ifndef SGBK_CLI_LINE_ENDS_H
#define SGBK_CLI_LINE_ENDS_H

#include <cstddef>
#include <string_view>

#include "encodings.h"

namespace cli {

class LineEnds {
 public:
  explicit LineEnds(Source source) : source_(source) {}

  // The offset behind the first or the last line end that ends behind `from`, 0 when there is none.
  // `text` starts with a whole character.
  std::size_t behindFirst(std::string_view text, std::size_t from = 0) const;
  std::size_t behindLast(std::string_view text, std::size_t from = 0) const;
  std::size_t count(std::string_view text) const;

 private:
  bool isWide() const { return source_ == Source::ucs2le || source_ == Source::ucs2be; }
  bool isWideLineFeed(std::string_view text, std::size_t at) const;

  Source source_;
};

}  // namespace cli

#endif
