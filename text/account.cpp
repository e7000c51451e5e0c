#include "account.h"

#include <algorithm>

namespace sgbk::text {
namespace {

// Sixteen bytes at once, whose counts are added up before they can overflow.
template <class Unit>
std::uint64_t countUnits(std::string_view text, Unit wanted) {
  typedef Unit Units __attribute__((vector_size(16)));
  constexpr std::size_t kMostBlocks = 255;
  std::uint64_t count = 0;
  while (text.size() >= sizeof(Units)) {
    const std::size_t blocks = std::min(text.size() / sizeof(Units), kMostBlocks);
    Units counts = {};
    for (std::size_t i = 0; i < blocks; ++i) {
      Units block;
      std::memcpy(&block, text.data() + i * sizeof block, sizeof block);
      counts -= reinterpret_cast<Units>(block == wanted);
    }
    for (std::size_t i = 0; i < sizeof counts / sizeof(Unit); ++i) count += counts[i];
    text.remove_prefix(blocks * sizeof(Units));
  }
  for (; text.size() >= sizeof(Unit); text.remove_prefix(sizeof(Unit))) {
    Unit unit;
    std::memcpy(&unit, text.data(), sizeof unit);
    count += unit == wanted;
  }
  return count;
}

std::uint64_t countLineFeeds(std::string_view text, Source source) {
  switch (source) {
    case Source::ucs2le: return countUnits<std::uint16_t>(text, '\n');
    case Source::ucs2be: return countUnits<std::uint16_t>(text, '\n' << 8);
    default: return countUnits<Byte>(text, '\n');
  }
}

}  // namespace

void Account::reset() {
  counts_ = {};
  losses_.clear();
}

void Account::countLines(const Byte* end) {
  counts_.lines += countLineFeeds(
      {reinterpret_cast<const char*>(counted_), static_cast<std::size_t>(end - counted_)}, source_);
  counted_ = end;
}

void Account::endPiece(const Byte* end) {
  countLines(end);
  counts_.bytes += static_cast<std::uint64_t>(end - begin_);
  begin_ = end;
}

void Account::tell(sgbk_reason reason, const Byte* p, std::size_t size, CodePoint c) {
  countLines(p);
  sgbk_loss loss = {};
  loss.line = counts_.lines + 1;
  loss.offset = counts_.bytes + static_cast<std::uint64_t>(p - begin_);
  loss.code_point = c;
  loss.reason = static_cast<std::uint8_t>(reason);
  loss.size = static_cast<std::uint8_t>(size);
  std::memcpy(loss.bytes, p, std::min<std::size_t>(size, SGBK_LOSS_BYTES));
  if (counts_.first.size == 0 && reason != SGBK_REPLACED) counts_.first = loss;
  if (isListed_) losses_.push_back(loss);
  if (isStrict_ && reason != SGBK_REPLACED) {
    endPiece(p);
    throw Stop();
  }
}

std::uint64_t Account::lost() const {
  return counts_.reasons[SGBK_MALFORMED] + counts_.reasons[SGBK_UNDEFINED] +
         counts_.reasons[SGBK_NOT_IN_TARGET];
}

}  // namespace sgbk::text
