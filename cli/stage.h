// What happens to GBK text between decoding and writing.

#ifndef SGBK_CLI_STAGE_H
#define SGBK_CLI_STAGE_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sgbk/EncodingConvertor.h"

namespace cli {

// A stage takes text of whole characters, ASCII in one byte, and never adds or takes a line feed.
class Stage {
 public:
  virtual ~Stage() = default;

  // Appends what becomes of `text` to `out`.
  // lineGoesOn  the last line of `text` is a part of one that was too long to come at once
  virtual void apply(std::string_view text, bool lineGoesOn, std::string& out) = 0;
};

// Markup characters that a stage would write plain stay full-width for the last stage to write as
// references, or are written plain.
enum class Markup { plain, escaped };

// Entities become the characters they name.
std::unique_ptr<Stage> makeEntityStage(EncodingConvertor& converter, Markup markup);
// Full-width ASCII becomes ASCII: sbc2dbc.
std::unique_ptr<Stage> makeWidthStage(Markup markup);
// Small letters: toLowerCase.
std::unique_ptr<Stage> makeCaseStage();
// Punctuation and blanks are thinned, line by line: trimgPunc.
std::unique_ptr<Stage> makeTrimStage(EncodingConvertor& converter);
// Lines of more than `limit` bytes are cut and end with "...": as sbc2dbc does.
std::unique_ptr<Stage> makeTruncateStage(std::size_t limit);
// Full-width markup characters become references: decodelibpage.
std::unique_ptr<Stage> makeReferenceStage();

// A character that the target does not have.
struct Unencoded {
  std::size_t line;  // of the text, from 0
  gchar_t character;
};

// ASCII becomes full-width ASCII.
std::unique_ptr<Stage> makeWideStage(EncodingConvertor& converter);
// gchar2big5. What Big5 does not have is added to `unencoded`.
std::unique_ptr<Stage> makeBig5Stage(EncodingConvertor& converter,
                                     std::vector<Unencoded>& unencoded);
// UTF-8 by the C library's converter.
std::unique_ptr<Stage> makeUtf8Stage();

// Calls handle(line) for each line of `text` and writes the line feeds between them.
template <class Handle>
void forEachLine(std::string_view text, std::string& out, Handle handle) {
  while (!text.empty()) {
    const std::size_t length = text.find('\n');
    handle(text.substr(0, length));
    if (length == std::string_view::npos) return;
    out += '\n';
    text.remove_prefix(length + 1);
  }
}

}  // namespace cli

#endif
