#include <string>

#include "code_points.h"
#include "sgbk/EncodingConvertor.h"
#include "stage.h"

namespace sgbk::text {
namespace {

class TruncateStage : public Stage {
 public:
  explicit TruncateStage(std::size_t limit) : limit_(limit) {}

  std::size_t apply(std::string_view text, bool ended, Buffer& out) override {
    std::size_t used = 0;
    while (used != text.size()) {
      const std::size_t lineFeed = text.find('\n', std::max(used, scanned_));
      const bool isWhole = lineFeed != std::string_view::npos || ended;
      const std::size_t end = std::min(lineFeed, text.size());
      // A carriage return before the line feed belongs to the line end.
      const std::size_t bodyEnd = end - (end != used && text[end - 1] == '\r');
      if (!isWhole && !isCut_ && end - used < limit_ + 2) break;
      const std::string_view body = text.substr(used, bodyEnd - used);
      if (!isCut_) body.size() <= limit_ ? out.append(body) : cut(body, out);
      isCut_ = !isWhole;
      used = bodyEnd;
      if (!isWhole) break;
      out.append(text.substr(bodyEnd, end + 1 - bodyEnd));
      used = std::min(end + 1, text.size());
    }
    scanned_ = text.size() - used;
    return used;
  }

 private:
  // The library cuts text that is written in its own classes: words, dots, all other ASCII, and
  // ideographs.
  void cut(std::string_view line, Buffer& out) const {
    std::string standIn;
    while (standIn.size() <= limit_) {
      const char c = line[standIn.size()];
      const std::size_t size = sizeAt(line, standIn.size());
      const bool isItself = isLetter(c) || isDigit(c) || c == '.';
      standIn += size != 1  ? std::string_view("\xB0\xA1\xB0\xA1", size)
                 : isItself ? std::string_view(&c, 1)
                            : "-";
    }
    std::string result(limit_ + 1, '\0');
    const int written = sbc2dbc(standIn.data(), static_cast<int>(standIn.size()), result.data(),
                                static_cast<int>(result.size()), false);
    const std::size_t dots = std::min<std::size_t>(3, limit_);
    // Four bytes are not to be cut into two.
    std::size_t kept = 0;
    while (kept + sizeAt(line, kept) <= static_cast<std::size_t>(written) - dots)
      kept += sizeAt(line, kept);
    out.append(line.substr(0, kept));
    out.append(std::string_view("...", dots));
  }

  static std::size_t sizeAt(std::string_view line, std::size_t at) {
    if (isAscii(static_cast<Byte>(line[at]))) return 1;
    return isFourBytesDigit(static_cast<Byte>(line[at + 1])) ? 4 : 2;
  }

  const std::size_t limit_;
  std::size_t scanned_ = 0;  // of what was left: bytes without a line feed
  bool isCut_ = false;       // the rest of the line is dropped
};

}  // namespace

std::unique_ptr<Stage> makeTruncateStage(std::size_t limit) {
  return std::make_unique<TruncateStage>(limit);
}

}  // namespace sgbk::text
