// Whether undefined GBK codes must be recognised one by one, or the table has done it already.

#ifndef SGBK_CORE_UNDEFINED_CODES_H
#define SGBK_CORE_UNDEFINED_CODES_H

#include "sgbk/support.h"

namespace sgbk {

// True when the loaded traditional-to-simplified table holds CHINESE_SPACE_CHAR at every undefined
// code, as ours does: looking a code up is then all there is to do. Another table library may hold
// anything there. Set before the converter is published, constant while it exists.
extern bool tableBlanksUndefinedCodes;

// Calls `convert` with the look-up of a double-byte code in `t2stable`: the simplified character,
// or CHINESE_SPACE_CHAR for an undefined code.
template <class Convert>
auto withSimplifiedLookup(const gchar_t* t2stable, Convert convert) {
  if (tableBlanksUndefinedCodes) return convert([=](gchar_t code) { return t2stable[code]; });
  return convert(
      [=](gchar_t code) { return isGBKUndefinedChar(code) ? CHINESE_SPACE_CHAR : t2stable[code]; });
}

}  // namespace sgbk

#endif
