// sgbk: the HTML character entity tables. Names stand without the "&" and the ";".

#ifndef SGBK_CHAR_ENTITY_H
#define SGBK_CHAR_ENTITY_H

#include <stddef.h>

#include "visibility.h"

// A 16-bit code unit: here a Unicode code point of the Basic Multilingual Plane.
typedef unsigned short UINT16;

// An entity and its code point.
struct tCharEntityMap {
  const char* pEntity;  // the name, NUL-terminated ASCII
  UINT16 uc;            // the code point
  size_t esclen;        // bytes in pEntity
};

// An entity and its plain ASCII replacement.
struct tCharaEntityMap {
  const char* pesc;   // the name, NUL-terminated
  const char* pdesc;  // the replacement, NUL-terminated
  int esclen;         // bytes in pesc
  int desclen;        // bytes in pdesc, 1 to 3
};

// The 252 entities of HTML 4.01 with the code points given there ("lang" is U+2329, unlike in
// later lists), in strcmp order.
extern SGBK_API const tCharEntityMap charEntitySet[252];

// The entities accepted without a closing semicolon, in strcmp order; "eacute", "ecirc" and
// "egrave" stand twice. No name is a prefix of another one.
extern SGBK_API const tCharEntityMap charEntityIESet[100];

// Entities with an ASCII replacement, in pairs: capitals at the even, lower case at the odd index.
// Searched front to back; no name is a prefix of another one.
extern SGBK_API const tCharaEntityMap charaentitymaps[60];

#endif
