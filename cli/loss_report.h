// What was lost, and where.

#ifndef SGBK_CLI_LOSS_REPORT_H
#define SGBK_CLI_LOSS_REPORT_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "line_ends.h"

namespace cli {

// undefined: well-formed, but there is no such character or the target has none for it.
// malformed: no character of the encoding at all.
enum class Reason { undefined, malformed };
inline constexpr int kReasons = 2;

std::string_view nameOf(Reason reason);

struct Loss {
  std::uint64_t line = 0;    // from 1
  std::uint64_t offset = 0;  // of its first byte in the input, from 0
  std::string bytes;         // as far as a character goes
  Reason reason = Reason::undefined;
};

std::string inHex(std::string_view bytes);

// The account of one input, kept while its pieces are converted.
class LossReport {
 public:
  using OnLoss = std::function<void(const Loss&)>;

  // onLoss   called with every loss, may throw to end the conversion
  LossReport(Source source, OnLoss onLoss) : lineEnds_(source), onLoss_(std::move(onLoss)) {}

  void beginPiece(std::string_view piece);
  // `used` bytes of the piece have been converted.
  void endPiece(std::size_t used);

  void addCharacters(std::size_t count) { characters_ += count; }
  // A loss of `size` bytes at `at` in the piece. Losses of a piece may come in any order.
  void add(Reason reason, std::size_t at, std::size_t size);
  // A loss whose bytes are not in the piece as such: it is located at `at`.
  void add(Reason reason, std::size_t at, std::string_view bytes);

  std::uint64_t characters() const { return characters_; }
  std::uint64_t bytes() const { return offset_; }
  std::uint64_t malformed() const { return counts_[static_cast<int>(Reason::malformed)]; }
  std::uint64_t lost() const { return counts_[0] + counts_[1]; }
  // "12 of 18008 characters lost (9 undefined, 3 malformed); first: line 41, byte 2207: 83 5C"
  std::string summary() const;

 private:
  LineEnds lineEnds_;
  OnLoss onLoss_;
  std::string_view piece_;
  std::uint64_t offset_ = 0;  // of the piece
  std::uint64_t line_ = 1;    // at `counted_`
  std::size_t counted_ = 0;   // bytes of the piece whose line ends are in line_
  std::uint64_t characters_ = 0;
  std::uint64_t counts_[kReasons] = {};
  Loss first_;
};

}  // namespace cli

#endif
