// Whether each code must be tested for being undefined, or the table already blanks undefined
// codes.

#ifndef SGBK_CORE_UNDEFINED_CODES_H
#define SGBK_CORE_UNDEFINED_CODES_H

#include "sgbk/support.h"

namespace sgbk {

// True when the loaded traditional-to-simplified table holds CHINESE_SPACE_CHAR at every undefined
// code, as ours does, so that a lookup is enough. Another table library may hold anything there.
// Set before the converter is published, and constant while it exists.
extern bool tableBlanksUndefinedCodes;

// Calls `convert` with the lookup of a double-byte code in `t2stable`: the simplified character,
// or CHINESE_SPACE_CHAR for an undefined code.
template <class Convert>
auto withSimplifiedLookup(const gchar_t* t2stable, Convert convert) {
  if (tableBlanksUndefinedCodes) return convert([=](gchar_t code) { return t2stable[code]; });
  return convert(
      [=](gchar_t code) { return isGBKUndefinedChar(code) ? CHINESE_SPACE_CHAR : t2stable[code]; });
}

}  // namespace sgbk

#endif
