// What is done to text line by line, between decoding and encoding.

#ifndef SGBK_TEXT_STAGE_H
#define SGBK_TEXT_STAGE_H

#include <memory>
#include <string_view>

#include "buffer.h"

namespace sgbk::text {

class Stage {
 public:
  virtual ~Stage() = default;

  // Appends what becomes of `text`: whole characters, ASCII in one byte, GBK in two,
  // others in four. ended    nothing follows Returns  the bytes used; what depends on text still to
  // come is not, and comes again with it
  virtual std::size_t apply(std::string_view text, bool ended, Buffer& out) = 0;
};

// Blanks, decoration and long runs of punctuation are thinned, as by trimgPunc on each line
// without its NUL characters; but of blanks at its end at most 1,024 bytes go. A character keeps
// its width.
std::unique_ptr<Stage> makeTrimStage();
// Lines of more than `limit` bytes are cut and end with "...", as by sbc2dbc.
std::unique_ptr<Stage> makeTruncateStage(std::size_t limit);

}  // namespace sgbk::text

#endif
