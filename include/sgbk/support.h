// sgbk: the GBK character model and the text utilities that need no conversion table.
//
// A GBK double-byte character is handled as one 16-bit unit, gchar_t:
//
//     unit = lead byte + 256 * trail byte          (A3 C1, full-width A, is 0xC1A3)
//
// so that an array of gchar_t is, byte for byte, GBK text on a little-endian host. Below, a
// character is written as its two bytes in text order, lead byte first.

#ifndef SGBK_SUPPORT_H
#define SGBK_SUPPORT_H

#include <stddef.h>

#include "CharEntity.h"
#include "visibility.h"

// A GBK double-byte character.
typedef unsigned short gchar_t;

// Reserved public value; nothing in the library writes or tests it.
constexpr gchar_t DEFAULT_ANSI_CONVERSION_CHAR = 0xFFFF;  // FF FF
// The line end of double-byte text: LF and CR become it. A code of the user-defined area, so it
// counts as a blank, and converting the text again turns it into CHINESE_SPACE_CHAR.
constexpr gchar_t RETURN_CONVERSION_CHAR = 0xA3FD;  // FD A3
// Two more codes that have been used for a space. The library never writes them; both are blanks.
constexpr gchar_t SPACE_CONVERSION_CHAR = 0xA0A1;  // A1 A0
constexpr gchar_t CHINESE_SPACE_CHAR2 = 0xA0A3;    // A3 A0
// The ideographic space, U+3000: spaces, TABs, most control bytes and undefined codes become it.
constexpr gchar_t CHINESE_SPACE_CHAR = 0xA1A1;  // A1 A1
// The full-width full stop.
constexpr gchar_t DOT_CONVERSION_CHAR = 0xAEA3;  // A3 AE
// The byte pair space, TAB: sbc2dbc and gchar2big5 replace it with one TAB byte.
constexpr gchar_t TAB_CONVERSION_CHAR = 0x0920;  // 20 09

// ---------------------------------------------------------------------------------------------
// Predicates on one unit. Pure, without tables or memory access; usable in constant expressions.

namespace sgbk_detail {

constexpr bool within(unsigned value, unsigned first, unsigned last) {
  return value - first <= last - first;
}

// Times three, A1..AF and F8..FE fall into one range of a byte, F7 and FF with them, and so one
// jump tells nearly all ideographs.
constexpr bool hasNoUndefinedCodes(unsigned lead) {
  return ((lead * 3 - 0xE3u) & 0xFFu) > 0x10Du - 0xE3u;
}

// clang-format off

// The cells A1..FE of rows A2 to A9 to which GBK assigns no character; row A3 is full. Rows A8 and
// A9 begin at 40.
constexpr bool isUnassignedCell(unsigned lead, unsigned trail) {
  return lead == 0xA2   ? within(trail, 0xAB, 0xB0) || within(trail, 0xE3, 0xE4) ||
                          within(trail, 0xEF, 0xF0) || within(trail, 0xFD, 0xFE)
         : lead == 0xA4 ? within(trail, 0xF4, 0xFE)
         : lead == 0xA5 ? within(trail, 0xF7, 0xFE)
         : lead == 0xA6 ? within(trail, 0xB9, 0xC0) || within(trail, 0xD9, 0xDF) ||
                          within(trail, 0xEC, 0xED) || trail == 0xF3 || within(trail, 0xF6, 0xFE)
         : lead == 0xA7 ? within(trail, 0xC2, 0xD0) || within(trail, 0xF2, 0xFE)
         : lead == 0xA8 ? within(trail, 0x96, 0xA0) || within(trail, 0xC1, 0xC4) ||
                          within(trail, 0xEA, 0xFE)
         : lead == 0xA9 ? trail == 0x58 || trail == 0x5B || within(trail, 0x5D, 0x5F) ||
                          within(trail, 0x97, 0xA3) || within(trail, 0xF5, 0xFE)
                        : false;
}

// What lower-casing adds to a unit, modulo 65536.
constexpr unsigned foldingDistance(unsigned lead, unsigned trail) {
  return !within(lead, 0xA2, 0xAB)                   ? 0u
         : lead == 0xA3 && within(trail, 0xC1, 0xDA) ? 0x2000u   // Latin
         : lead == 0xA6 && within(trail, 0xA1, 0xB8) ? 0x2000u   // Greek
         : lead == 0xA7 && within(trail, 0xA1, 0xC1) ? 0x3000u   // Cyrillic
         : lead == 0xA2 && within(trail, 0xF1, 0xFA) ? 0x10000u - 0x5000u  // Roman numerals
         : within(lead, 0xA4, 0xA5) && within(trail, 0xA2, 0xAA) && trail % 2 == 0
                                                     ? 0x10000u - 0x0100u  // kana vowels
         : lead == 0xAA && within(trail, 0xDC, 0xDE) ? 0x2000u
         : lead == 0xAB && within(trail, 0xC1, 0xDE) ? 0x2000u
                                                     : 0u;
}

// clang-format on

constexpr bool isUndefinedSymbol(unsigned lead, unsigned trail) {
  return within(lead, 0xA1, 0xA9)
             ? (lead <= 0xA7 && within(trail, 0x40, 0xA0) && trail != 0x7F) ||
                   isUnassignedCell(lead, trail)
             : (within(lead, 0xAA, 0xAF) || within(lead, 0xF8, 0xFE)) && within(trail, 0xA1, 0xFE);
}

}  // namespace sgbk_detail

// True for the user-defined areas (AA A1..AF FE, F8 A1..FE FE, A1 40..A7 A0 without trail 7F) and
// for the unassigned cells of rows A2 to A9. A trail byte FF never makes a code undefined, and a
// pair that is not GBK at all (trail byte below 40, 7F or FF) is not one of these either.
constexpr bool isGBKUndefinedChar(unsigned short wc) {
  return sgbk_detail::hasNoUndefinedCodes(wc & 0xFFu)
             ? false
             : sgbk_detail::isUndefinedSymbol(wc & 0xFFu, wc >> 8u);
}

// True for blanks: CHINESE_SPACE_CHAR and every undefined code, RETURN_CONVERSION_CHAR among them.
// The ASCII space held in a unit (0x0020) is not a blank.
constexpr bool isgcharspace(gchar_t gch) {
  return gch == CHINESE_SPACE_CHAR || isGBKUndefinedChar(gch);
}

// The lower-case form: full-width Latin, Greek and Cyrillic capitals, the Roman numerals one to
// ten, the full-size kana vowels (to the small kana) and two runs of the user-defined rows AA and
// AB. Any other unit comes back unchanged; the lead byte never changes.
constexpr gchar_t toLowerCase(gchar_t wc) {
  return static_cast<gchar_t>(wc + sgbk_detail::foldingDistance(wc & 0xFFu, wc >> 8u));
}

// True for the full-width digits A3 B0..A3 B9.
constexpr bool isSBCDigit(UINT16 wc) {
  return (wc & 0xFFu) == 0xA3 && sgbk_detail::within(wc >> 8u, 0xB0, 0xB9);
}

// True for the full-width Latin letters A3 C1..A3 DA and A3 E1..A3 FA.
constexpr bool isSBCLetter(UINT16 wc) {
  return (wc & 0xFFu) == 0xA3 &&
         (sgbk_detail::within(wc >> 8u, 0xC1, 0xDA) || sgbk_detail::within(wc >> 8u, 0xE1, 0xFA));
}

// True for decoration: the geometric symbols and the geta mark of row A1, the vertical forms of
// row A6, the box-drawing, block and triangle characters A8 54..A8 90 and A9 A4..A9 EF.
constexpr bool isShapeChar(UINT16 wc) {
  return (wc & 0xFFu) == 0xA1   ? sgbk_detail::within(wc >> 8u, 0xEE, 0xF9) || wc >> 8u == 0xFE
         : (wc & 0xFFu) == 0xA6 ? sgbk_detail::within(wc >> 8u, 0xE0, 0xF5)
         : (wc & 0xFFu) == 0xA8 ? sgbk_detail::within(wc >> 8u, 0x54, 0x90)
         : (wc & 0xFFu) == 0xA9 ? sgbk_detail::within(wc >> 8u, 0xA4, 0xEF)
                                : false;
}

// True for every blank and for the symbol area (rows A1..A9 and A8 40..A9 A0), kana and Greek
// included; never for a full-width letter or digit.
constexpr bool isGraphChar(UINT16 wc) {
  return !isSBCDigit(wc) && !isSBCLetter(wc) &&
         (isgcharspace(wc) ||
          (sgbk_detail::within(wc & 0xFFu, 0xA1, 0xA9) &&
           sgbk_detail::within(wc >> 8u, 0xA1, 0xFE)) ||
          (sgbk_detail::within(wc & 0xFFu, 0xA8, 0xA9) &&
           sgbk_detail::within(wc >> 8u, 0x40, 0xA0)));
}

// ---------------------------------------------------------------------------------------------
// Punctuation trimming of gchar_t text.

// Cleans text for indexing. Units are told apart in this order: blanks (isgcharspace), shapes
// (isShapeChar), punctuation (everything else in isGraphChar, kana and Greek too), the rest.
// - Blanks and shapes at the start and blanks at the end are dropped; the first unit after them is
//   copied, whatever it is.
// - After that, shapes are dropped. A run of blanks, with any shapes in it, becomes one
//   CHINESE_SPACE_CHAR, or one RETURN_CONVERSION_CHAR if there is a line end in it.
// - A run of punctuation goes on over blanks, but not over shapes or line ends. Up to eight units
//   are copied, with one CHINESE_SPACE_CHAR for each run of blanks among them; nine or more become
//   the first one, or nothing after a blank. Blanks that end such a run are not joined with a line
//   end, or with blanks beyond a shape, that follows it.
// - Everything else is copied.
// src      units, ended by a 0 unit
// dest     must hold as many units as src, terminator included; may not overlap src. Units of it
//          after the result may be overwritten
// Returns  the number of units written, the terminating 0 included: at least 1
SGBK_API size_t trimgPunc(const gchar_t* src, gchar_t* dest);

// The same for counted text. 0 units before the last one are dropped; a run ends there.
// srclen   units of src, the terminating 0 at src[srclen - 1] included. The last unit ends the text
//          even if it is not 0; srclen 0 reads nothing
// dest     must hold srclen units (1 for srclen 0); always terminated
// Returns  as above
SGBK_API size_t trimgPunc(const gchar_t* src, size_t srclen, gchar_t* dest);

// ---------------------------------------------------------------------------------------------
// HTML character entities, given without the "&" and the ";". Names are case-sensitive.

// The code point of the entity called exactly `reference` (NUL-terminated), one of the 252 of
// HTML 4.01; 0xFFFE when there is none.
SGBK_API UINT16 decodeCharEntity(const char* reference);

// The code point of the entity whose name `reference` (NUL-terminated) begins with, among those
// accepted without a closing semicolon, whatever follows it; 0xFFFE when there is none.
// len      receives the length of the matched name in bytes, 0 when none matched
SGBK_API UINT16 decodeIrregularCharEntity(const char* reference, size_t& len);

// Writes the ASCII replacement of the entity called exactly `pescstr` (NUL-terminated), or the
// first byte of `pescstr`, be it the NUL, when there is none.
// pdesc    at least 4 bytes; always terminated
// Returns  the bytes written before the NUL: 1 to 3
SGBK_API int deEscHtml(const char* pescstr, char* pdesc);

// Writes the ASCII replacement of the entity whose name `pescstr` (NUL-terminated) begins with.
// pdesc    at least 4 bytes; terminated on a match, otherwise untouched
// pscan    moved forward by the length of the matched name; a ";" after it is the caller's
// Returns  the bytes written before the NUL, 1 to 3; 0 without a match or for a null pescstr
SGBK_API int deEscHtml(const char* pescstr, char* pdesc, const char*& pscan);

// ---------------------------------------------------------------------------------------------
// NUL-terminated byte strings, compared byte by byte.

// True when src begins with prefix. An empty prefix begins every string; false for a null pointer.
SGBK_API bool startsWith(const char* src, const char* prefix);

// True when src ends with postfix. An empty postfix ends every string; false for a null pointer.
SGBK_API bool endsWith(const char* src, const char* postfix);

#endif
