#include "fold/ellipsis.h"

#include <algorithm>
#include <cctype>

namespace sgbk {

int endWithEllipsis(char* text, int length, int capacity, Byte lowestTrail) {
  const auto byteAt = [text](int i) { return static_cast<Byte>(text[i]); };
  int last = length - 1;  // the last byte kept, -1 for none

  // Room for the dots: whole characters of three bytes and more. Read from the end, a trail byte
  // below `lowestTrail` passes for ASCII, so the text may end in a lone lead byte.
  for (const int enough = length - 4; last > enough && last >= 0;) {
    last -= byteAt(last) >= lowestTrail ? 2 : 1;
  }
  last = std::max(last, -1);

  // A word cut short goes too, but no more than 16 bytes of it.
  for (const int limit = std::max(0, last - 16); last > limit && std::isalnum(byteAt(last)) != 0;) {
    --last;
  }

  // The dots of the text would run into ours.
  for (const int limit = std::max(0, last - 3); last > limit && byteAt(last) == '.';) --last;

  // Where less than three fit, nothing of the text is left.
  const int dots = std::min(3, capacity - 1);
  char* const end = std::fill_n(text + last + 1, dots, '.');
  *end = '\0';
  return static_cast<int>(end - text);
}

}  // namespace sgbk
