// What was lost or replaced, and where.

#ifndef SGBK_TEXT_ACCOUNT_H
#define SGBK_TEXT_ACCOUNT_H

#include <vector>

#include "code_points.h"
#include "options.h"
#include "sgbk/text.h"

namespace sgbk::text {

struct Account {
  // Thrown out of the decoder by the first loss, under strict.
  struct Stop {};

  // A piece of the input begins here, and all before it was dealt with.
  void beginPiece(const Byte* begin) { counted_ = begin; }
  // The piece was dealt with up to here: counts its bytes and lines.
  void countTo(const Byte* end);

  void addCharacters(std::ptrdiff_t count) {
    counts.characters += static_cast<std::uint64_t>(count);
  }
  // At `p` in the piece, `size` bytes of input. Calls come in the order of the input. Under strict
  // throws Stop, and the account ends there.
  void add(sgbk_reason reason, const Byte* p, std::size_t size, CodePoint c) {
    ++counts.reasons[reason];
    const bool isFirst = counts.first.size == 0 && reason != SGBK_REPLACED;
    if (isFirst || isListed) tell(reason, p, size, c);
  }
  std::uint64_t lost() const;

  Source source = Source::automatic;  // says what a line feed is
  bool isListed = false;              // losses are not only counted
  bool isStrict = false;
  sgbk_counts counts = {};
  std::vector<sgbk_loss> losses;

 private:
  void tell(sgbk_reason reason, const Byte* p, std::size_t size, CodePoint c);

  const Byte* counted_ = nullptr;  // what is before it is in counts
};

}  // namespace sgbk::text

#endif
