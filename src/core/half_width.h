// The ASCII byte that a full-width character stands for.

#ifndef SGBK_CORE_HALF_WIDTH_H
#define SGBK_CORE_HALF_WIDTH_H

#include "core/gbk_bytes.h"

namespace sgbk {

// What the full-width yen sign stands for: itself, or the dollar sign whose place it takes.
enum class Yen { kept, dollar };

// 21..7E, or 0 for a character without an ASCII form. Undoes the widening of printable ASCII.
constexpr Byte halfWidth(gchar_t unit, Yen yen = Yen::kept) {
  const Byte trail = trailOf(unit);
  if (leadOf(unit) == 0xA3) {
    const bool folds =
        sgbk_detail::within(trail, 0xA1, 0xFD) && (yen == Yen::dollar || trail != 0xA4);
    return folds ? static_cast<Byte>(trail - 0x80) : Byte{0};
  }
  if (unit == unitOf(0xA1, 0xAB)) return '~';
  if (unit == unitOf(0xA1, 0xE7)) return '$';
  return 0;
}

}  // namespace sgbk

#endif
