// Truncating text that does not fit.

#ifndef SGBK_FOLD_ELLIPSIS_H
#define SGBK_FOLD_ELLIPSIS_H

#include "core/gbk_bytes.h"

namespace sgbk {

// Shortens the text of `length` bytes at `text` so that "..." and a NUL follow it within
// `capacity` bytes (1 or more); a capacity below 4 gets as many dots as fit.
// lowestTrail  the lowest byte that is taken for a trail byte when reading backwards
// Returns      the bytes before the NUL
int endWithEllipsis(char* text, int length, int capacity, Byte lowestTrail);

}  // namespace sgbk

#endif
