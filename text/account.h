// What was lost or replaced, and where.

#ifndef SGBK_TEXT_ACCOUNT_H
#define SGBK_TEXT_ACCOUNT_H

#include <vector>

#include "code_points.h"
#include "encodings.h"
#include "sgbk/text.h"

namespace sgbk::text {

class Account {
 public:
  // Thrown out of the decoder by the first loss, under strict.
  struct Stop {};

  void reset();
  // The encoding of the pieces to come, which says what a line feed is.
  void setSource(Source source) { source_ = source; }
  // Whether losses are listed and not only counted.
  void setList(bool isListed) { isListed_ = isListed; }
  void setStrict(bool isStrict) { isStrict_ = isStrict; }

  // A piece of the input begins here, and all before it was dealt with.
  void beginPiece(const Byte* begin) { counted_ = begin_ = begin; }
  // The piece was dealt with up to here.
  void endPiece(const Byte* end);

  void addCharacters(std::ptrdiff_t count) {
    counts_.characters += static_cast<std::uint64_t>(count);
  }
  // At `p` in the piece, `size` bytes of input. Calls come in the order of the input. Under strict
  // throws Stop, and the piece ends there.
  void add(sgbk_reason reason, const Byte* p, std::size_t size, CodePoint c) {
    ++counts_.reasons[reason];
    const bool isFirst = counts_.first.size == 0 && reason != SGBK_REPLACED;
    if (isFirst || isListed_) tell(reason, p, size, c);
  }

  const sgbk_counts& counts() const { return counts_; }
  std::uint64_t lost() const;
  std::vector<sgbk_loss>& losses() { return losses_; }
  const std::vector<sgbk_loss>& losses() const { return losses_; }

 private:
  void countLines(const Byte* end);
  void tell(sgbk_reason reason, const Byte* p, std::size_t size, CodePoint c);

  Source source_ = Source::automatic;
  bool isListed_ = false;
  bool isStrict_ = false;
  const Byte* begin_ = nullptr;    // of the piece
  const Byte* counted_ = nullptr;  // line feeds before it are in counts_
  sgbk_counts counts_ = {};
  std::vector<sgbk_loss> losses_;
};

}  // namespace sgbk::text

#endif
