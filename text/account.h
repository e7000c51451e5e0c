// What was lost or replaced, and where.

#ifndef SGBK_TEXT_ACCOUNT_H
#define SGBK_TEXT_ACCOUNT_H

#include <vector>

#include "code_points.h"
#include "sgbk/text.h"

namespace sgbk::text {

// Where a line feed can stand.
enum class LineFeeds { inBytes, inUnits, inSwappedUnits };

// The offset after the last line feed, 0 when there is none. In units, `text` starts with a whole
// one.
std::size_t afterLastLineFeed(std::string_view text, LineFeeds kind);
std::size_t afterFirstLineFeed(std::string_view text, LineFeeds kind);

class Account {
 public:
  void reset();
  void setLineFeeds(LineFeeds kind) { lineFeeds_ = kind; }
  // Whether losses are listed and not only counted.
  void setList(bool isListed) { isListed_ = isListed; }

  // A piece of the input begins here, and all before it was dealt with.
  void beginPiece(const Byte* begin) { counted_ = begin_ = begin; }
  // The piece was dealt with up to here.
  void endPiece(const Byte* end);

  void addCharacters(std::ptrdiff_t count) {
    counts_.characters += static_cast<std::uint64_t>(count);
  }
  // At `p` in the piece, `size` bytes of input. Calls come in the order of the input.
  void add(sgbk_reason reason, const Byte* p, std::size_t size, CodePoint c) {
    ++counts_.reasons[reason];
    const bool isFirst = counts_.first.size == 0 && reason != SGBK_REPLACED;
    if (isFirst || isListed_) tell(reason, p, size, c);
  }

  // A loss that was told before.
  void addAgain(const sgbk_loss& loss);

  const sgbk_counts& counts() const { return counts_; }
  std::uint64_t lost() const;
  std::vector<sgbk_loss>& losses() { return losses_; }
  const std::vector<sgbk_loss>& losses() const { return losses_; }

  // For taking back what came after a point.
  struct Mark {
    sgbk_counts counts;
    std::size_t losses;
  };
  Mark mark() const { return {counts_, losses_.size()}; }
  void goBackTo(const Mark& mark);

 private:
  void countLines(const Byte* end);
  void tell(sgbk_reason reason, const Byte* p, std::size_t size, CodePoint c);

  LineFeeds lineFeeds_ = LineFeeds::inBytes;
  bool isListed_ = false;
  const Byte* begin_ = nullptr;    // of the piece
  const Byte* counted_ = nullptr;  // line feeds before it are in counts_
  sgbk_counts counts_ = {};
  std::vector<sgbk_loss> losses_;
};

}  // namespace sgbk::text

#endif
