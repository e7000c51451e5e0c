// decodelibpage: page text to half-width, its full-width markup characters escaped.

#include <algorithm>
#include <climits>
#include <string_view>

#include "fold/plain_block.h"
#include "sgbk/EncodingConvertor.h"

namespace {

// The character reference for a full-width markup character, empty for other characters.
std::string_view referenceFor(gchar_t pair) {
  switch (pair) {
    case sgbk::unitOf(0xA3, 0xA6): return "&amp;";
    case sgbk::unitOf(0xA3, 0xBC): return "&lt;";
    case sgbk::unitOf(0xA3, 0xBE): return "&gt;";
    default: return {};
  }
}

}  // namespace

int decodelibpage(const char* src, size_t srclen, char* dest, size_t destsize, bool ifcase) {
  using namespace sgbk;
  constexpr std::size_t kReserved = 2;
  if (destsize <= kReserved) return -1;
  // The result counts the bytes in an int.
  char* const destend = dest + std::min(destsize - kReserved, std::size_t{INT_MAX});
  CountedInput in(src, srclen);
  FoldedOutput out{dest};
  while (!in.atEnd() && out.pdest < destend) {
    if (takePlainRun<Yen::kept, Markup::leftOut>(in, out, destend - out.pdest, ifcase,
                                                 [](gchar_t folded) { return folded; })) {
      continue;
    }
    if (in.hasPair()) {
      const gchar_t pair = loadUnit(in.psrc);
      if (pair == DESCRIPTION_CONTENT_SEPARATOR) {
        in.psrc += 2;
        continue;
      }
      if (const auto reference = referenceFor(pair); !reference.empty()) {
        if (reference.size() > static_cast<std::size_t>(destend - out.pdest)) return -1;
        out.pdest += reference.copy(out.pdest, reference.size());
        in.psrc += 2;
        continue;
      }
    }
    // A double-byte character may fill the first reserved byte; then the text is too long.
    foldNext<SpaceTab::kept, Yen::kept>(in, out, ifcase,
                                        [](gchar_t, gchar_t lowered) { return lowered; });
  }
  if (out.pdest >= destend) return -1;
  *out.pdest = '\0';
  return static_cast<int>(out.pdest - dest);
}
