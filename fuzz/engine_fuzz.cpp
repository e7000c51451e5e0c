// The text engine through its C interface. The first bytes of an input choose source, target,
// options and where the text is cut; the rest is the text. What any cutting gives is compared, and
// the account held against the text.

#include "support/engine.h"
#include "target.h"

using namespace sgbk_test;

std::string faultOf(const std::string& input) {
  constexpr std::size_t kHead = 8;
  if (input.size() < kHead) return "";
  static const auto sources = names(sgbk_sources), targets = names(sgbk_targets);
  const auto at = [&](std::size_t i) { return std::size_t{static_cast<unsigned char>(input[i])}; };
  const std::string setup = setupOf(sources[at(0) % sources.size()],
                                    targets[at(1) % targets.size()], at(2) + 256 * at(3));
  return disagreement(setup, input.substr(kHead), {at(4), at(5), at(6), at(7) + 1});
}
