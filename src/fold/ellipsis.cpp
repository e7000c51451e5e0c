#include "fold/ellipsis.h"

#include <algorithm>
#include <cctype>

namespace sgbk {

int endWithEllipsis(char* text, int length, int capacity, Byte lowestTrail) {
  const auto byteAt = [text](int i) { return static_cast<Byte>(text[i]); };
  int pbackscan = length - 1;  // the last byte kept, -1 for none

  // Make room for the dots: remove characters until three bytes or more are gone. Seen from the
  // end, a trail byte below `lowestTrail` looks like ASCII, so the text may end in a lone lead
  // byte.
  for (const int pbackscanguard = length - 4; pbackscan > pbackscanguard && pbackscan >= 0;) {
    pbackscan -= byteAt(pbackscan) >= lowestTrail ? 2 : 1;
  }
  pbackscan = std::max(pbackscan, -1);

  // Remove the rest of a word that was cut, but no more than 16 bytes of it.
  for (const int limit = std::max(0, pbackscan - 16);
       pbackscan > limit && std::isalnum(byteAt(pbackscan)) != 0;) {
    --pbackscan;
  }

  // Dots of the text would run into ours.
  for (const int limit = std::max(0, pbackscan - 3); pbackscan > limit && byteAt(pbackscan) == '.';)
    --pbackscan;

  // If less than three fit, nothing of the text is left.
  const int dots = std::min(3, capacity - 1);
  char* const end = std::fill_n(text + pbackscan + 1, dots, '.');
  *end = '\0';
  return static_cast<int>(end - text);
}

}  // namespace sgbk
