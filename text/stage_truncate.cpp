#include <string>

#include "code_points.h"
#include "sgbk/EncodingConvertor.h"
#include "stage.h"

namespace sgbk::text {
namespace {

class TruncateStage : public Stage {
 public:
  explicit TruncateStage(std::size_t limit) : limit_(limit) {}

  void apply(std::string_view text, bool ended, Buffer& out) override {
    while (!text.empty()) {
      const std::size_t size = std::min(text.find('\n'), text.size());
      keep(text.substr(0, size));
      text.remove_prefix(size);
      if (text.empty()) break;
      endLine(out);
      out.append('\n');
      text.remove_prefix(1);
    }
    if (ended) endLine(out);
  }

  void reset() override {
    line_.clear();
    length_ = 0;
  }

 private:
  // As much of the line as has a say in where it is cut.
  void keep(std::string_view part) {
    if (part.empty()) return;
    length_ += part.size();
    endsInReturn_ = part.back() == '\r';
    line_.append(part.substr(0, limit_ + 2 - line_.size()));
  }

  // A carriage return before the line feed belongs to the line end.
  void endLine(Buffer& out) {
    if (length_ == 0) return;
    const std::size_t length = length_ - endsInReturn_;
    if (length <= limit_) {
      out.append(line_.view().substr(0, length));
    } else {
      cut(out);
    }
    if (endsInReturn_) out.append('\r');
    reset();
  }

  // The library cuts text that is written in its own classes: words, dots, all other ASCII, and
  // ideographs.
  void cut(Buffer& out) {
    const std::string_view line = line_.view();
    std::string standIn;
    for (std::size_t at = 0; standIn.size() <= limit_;) {
      const auto b = static_cast<Byte>(line[at]);
      if (isAscii(b)) {
        const bool isWord = (b >= '0' && b <= '9') || ((b | 0x20) >= 'a' && (b | 0x20) <= 'z');
        standIn += isWord || b == '.' ? static_cast<char>(b) : '-';
      } else if (isFourBytesDigit(static_cast<Byte>(line[at + 1]))) {
        standIn += "\xB0\xA1\xB0\xA1";
      } else {
        standIn += "\xB0\xA1";
      }
      at = standIn.size();
    }
    std::string result(limit_ + 1, '\0');
    const int written = sbc2dbc(standIn.data(), static_cast<int>(standIn.size()), result.data(),
                                static_cast<int>(result.size()), false);
    const std::size_t dots = std::min<std::size_t>(3, limit_);
    out.append(line.substr(0, wholeCharacters(line, static_cast<std::size_t>(written) - dots)));
    out.append(std::string_view("...", dots));
  }

  // Four bytes are not to be cut into two.
  static std::size_t wholeCharacters(std::string_view line, std::size_t size) {
    std::size_t at = 0;
    for (;;) {
      const std::size_t length = isAscii(static_cast<Byte>(line[at]))                            ? 1
                                 : isFourBytesDigit(static_cast<Byte>(line[at + 1])) ? 4
                                                                                                 : 2;
      if (at + length > size) return at;
      at += length;
    }
  }

  const std::size_t limit_;
  Buffer line_;             // its first limit_ + 2 bytes
  std::size_t length_ = 0;  // of all of it
  bool endsInReturn_ = false;
};

}  // namespace

std::unique_ptr<Stage> makeTruncateStage(std::size_t limit) {
  return std::make_unique<TruncateStage>(limit);
}

}  // namespace sgbk::text
