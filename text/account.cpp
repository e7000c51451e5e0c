#include "account.h"

#include <algorithm>

#include "core/vectors.h"

namespace sgbk::text {
namespace {

// Sixteen bytes at once, whose counts are added up before they can overflow.
template <class Vector>
std::uint64_t countUnits(std::string_view text, ElementOf<Vector> wanted) {
  using Unit = ElementOf<Vector>;
  constexpr std::size_t kMostBlocks = 255;
  std::uint64_t count = 0;
  while (text.size() >= sizeof(Vector)) {
    const std::size_t blocks = std::min(text.size() / sizeof(Vector), kMostBlocks);
    Vector counts = {};
    for (std::size_t i = 0; i < blocks; ++i) {
      counts -= equalTo(load<Vector>(text.data() + i * sizeof counts), wanted);
    }
    for (std::size_t i = 0; i < sizeof counts / sizeof(Unit); ++i) count += counts[i];
    text.remove_prefix(blocks * sizeof counts);
  }
  for (; text.size() >= sizeof(Unit); text.remove_prefix(sizeof(Unit))) {
    count += load<Unit>(text.data()) == wanted;
  }
  return count;
}

}  // namespace

void Account::countTo(const Byte* end) {
  const std::string_view text(reinterpret_cast<const char*>(counted_),
                              static_cast<std::size_t>(end - counted_));
  counts.lines += source == Source::ucs2le   ? countUnits<Units>(text, '\n')
                  : source == Source::ucs2be ? countUnits<Units>(text, '\n' << 8)
                                             : countUnits<Bytes>(text, '\n');
  counts.bytes += text.size();
  counted_ = end;
}

void Account::tell(sgbk_reason reason, const Byte* p, std::size_t size, CodePoint c) {
  countTo(p);
  sgbk_loss loss = {};
  loss.line = counts.lines + 1;
  loss.offset = counts.bytes;
  loss.code_point = c;
  loss.reason = static_cast<std::uint8_t>(reason);
  loss.size = static_cast<std::uint8_t>(size);
  std::memcpy(loss.bytes, p, std::min<std::size_t>(size, SGBK_LOSS_BYTES));
  if (counts.first.size == 0 && reason != SGBK_REPLACED) counts.first = loss;
  if (isListed) losses.push_back(loss);
  if (isStrict && reason != SGBK_REPLACED) throw Stop();
}

std::uint64_t Account::lost() const {
  return counts.reasons[SGBK_MALFORMED] + counts.reasons[SGBK_UNDEFINED] +
         counts.reasons[SGBK_NOT_IN_TARGET];
}

}  // namespace sgbk::text
