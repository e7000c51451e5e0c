// Folding text into a buffer and cutting what does not fit: the loop of sbc2dbc and gchar2big5.

#ifndef SGBK_FOLD_FOLD_TO_FIT_H
#define SGBK_FOLD_FOLD_TO_FIT_H

#include "fold/ellipsis.h"
#include "fold/fold_step.h"

namespace sgbk {

// When a character no longer fits: when its own bytes do not, or already when a double-byte one
// would not.
enum class Room { forThisCharacter, forAnyCharacter };

// next         called with the input; returns the next character, folded
// lowestTrail  as for endWithEllipsis
// Returns      the bytes written before the NUL
template <Room room, class Input, class Next>
int foldToFit(Input in, char* dest, int destlen, Byte lowestTrail, Next next) {
  if (destlen <= 0) return 0;
  char* out = dest;
  char* const last = dest + destlen - 1;  // the NUL stands here at the latest
  const int needed = room == Room::forAnyCharacter ? 2 : 1;
  while (!in.atEnd()) {
    if (last - out < needed) {
      return endWithEllipsis(dest, static_cast<int>(out - dest), destlen, lowestTrail);
    }
    const Folded folded = next(in);
    if (folded.size > last - out) {
      return endWithEllipsis(dest, static_cast<int>(out - dest), destlen, lowestTrail);
    }
    for (int i = 0; i < folded.size; ++i) *out++ = static_cast<char>(folded.bytes[i]);
  }
  *out = '\0';
  return static_cast<int>(out - dest);
}

}  // namespace sgbk

#endif
