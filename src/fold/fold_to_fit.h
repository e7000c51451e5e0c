// Folding text into a buffer and truncating it if necessary: the loop of sbc2dbc and gchar2big5.

#ifndef SGBK_FOLD_FOLD_TO_FIT_H
#define SGBK_FOLD_FOLD_TO_FIT_H

#include <algorithm>

#include "fold/ellipsis.h"
#include "fold/fold_step.h"

namespace sgbk {

// When the room is used up: when the next character does not fit, or as soon as a double-byte one
// would not.
enum class Room { forThisCharacter, forAnyCharacter };

// takeRun      called with the input, the output and its room, to take several simple characters at
//              once; returns false when there are none
// takeNext     called with the input and the output; folds the next character
// lowestTrail  as for endWithEllipsis
// Returns      the bytes written before the NUL
template <Room room, class Input, class TakeRun, class TakeNext>
int foldToFit(Input in, char* dest, int destlen, Byte lowestTrail, TakeRun takeRun,
              TakeNext takeNext) {
  if (destlen <= 0) return 0;
  FoldedOutput out{dest};
  char* const destend = dest + destlen - 1;  // the last place for the NUL
  while (!in.atEnd()) {
    const std::ptrdiff_t free = destend - out.pdest;
    const std::ptrdiff_t room_of_run = free - (room == Room::forAnyCharacter ? 1 : 0);
    if (free >= 2 && takeRun(in, out, room_of_run)) continue;
    char aside[2];
    FoldedOutput folded{free >= 2 ? out.pdest : aside};
    takeNext(in, folded);
    if (free < 2) {
      const bool fits = room == Room::forThisCharacter && free == 1 && folded.pdest - aside <= 1;
      if (!fits) {
        return endWithEllipsis(dest, static_cast<int>(out.pdest - dest), destlen, lowestTrail);
      }
      folded.pdest = std::copy(aside, folded.pdest, out.pdest);
    }
    out = folded;
  }
  *out.pdest = '\0';
  return static_cast<int>(out.pdest - dest);
}

}  // namespace sgbk

#endif
