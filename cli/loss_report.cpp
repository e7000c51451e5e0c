#include "loss_report.h"

#include <algorithm>

namespace cli {

std::string_view nameOf(Reason reason) {
  return reason == Reason::undefined ? "undefined" : "malformed";
}

std::string inHex(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string hex;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (!hex.empty()) hex += ' ';
    hex += {kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return hex;
}

void LossReport::beginPiece(std::string_view piece) {
  piece_ = piece;
  counted_ = 0;
}

void LossReport::endPiece(std::size_t used) {
  line_ += lineEnds_.count(piece_.substr(counted_, used - counted_));
  offset_ += used;
}

void LossReport::add(Reason reason, std::size_t at, std::size_t size) {
  add(reason, at, piece_.substr(at, size));
}

void LossReport::add(Reason reason, std::size_t at, std::string_view bytes) {
  if (at >= counted_) {
    line_ += lineEnds_.count(piece_.substr(counted_, at - counted_));
  } else {
    line_ -= lineEnds_.count(piece_.substr(at, counted_ - at));
  }
  counted_ = at;
  const Loss loss{line_, offset_ + at, std::string(bytes), reason};
  if (lost() == 0 || loss.offset < first_.offset) first_ = loss;
  ++counts_[static_cast<int>(reason)];
  onLoss_(loss);
}

std::string LossReport::summary() const {
  return std::to_string(lost()) + " of " + std::to_string(characters_) + " characters lost (" +
         std::to_string(counts_[0]) + " undefined, " + std::to_string(counts_[1]) +
         " malformed); first: line " + std::to_string(first_.line) + ", byte " +
         std::to_string(first_.offset) + ": " + inHex(first_.bytes);
}

}  // namespace cli
