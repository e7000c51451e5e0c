// sgbk: the process-wide converter, and the folding functions that need none.
//
// Three kinds of text appear below:
//   GBK text          ASCII in one byte, every other character in two
//   double-byte GBK   every character in two bytes: printable ASCII is widened to its full-width
//                     form, blanks and control bytes become CHINESE_SPACE_CHAR, LF and CR become
//                     RETURN_CONVERSION_CHAR, NUL becomes 00 00 and 0x01 becomes 01 20
//   gchar_t array     the same characters, one gchar_t each, ended by a 0 element
//
// Malformed input is never rejected: a lead byte 81..FE takes the next byte as its trail byte,
// whatever that byte is. Nothing is read outside the input or written outside the output, and
// bytes of the output behind the result stay untouched, unless text was cut. Source and destination
// may not overlap.

#ifndef SGBK_ENCODING_CONVERTOR_H
#define SGBK_ENCODING_CONVERTOR_H

#include <stddef.h>

#include "support.h"
#include "visibility.h"

// Stands between a description and the content in page text; decodelibpage removes it.
constexpr gchar_t DESCRIPTION_CONTENT_SEPARATOR = 0xFFFE;  // FE FF
// The printable ASCII bytes that are widened: FIRST_DBC <= c < LAST_DBC go to row A3 ("$" to
// A1 E7), LAST_DBC itself, the tilde, to A1 AB.
constexpr unsigned char FIRST_DBC = 33;
constexpr unsigned char LAST_DBC = 126;

// One object a process, made by initializeInstance and destroyed by clear. Any number of threads
// may convert on it at once; none may be inside a conversion while clear runs.
class SGBK_API EncodingConvertor {
 public:
  virtual ~EncodingConvertor();

  // Creates the converter and loads its tables; does nothing when it exists already.
  // pathname  not used
  // Returns   0 when the converter exists, -1 when there was no memory for it (512 KiB)
  static int initializeInstance(const char* pathname);

  // Returns the converter, or null before initializeInstance and after clear. Takes no lock.
  static EncodingConvertor* getInstance();

  // Destroys the converter; does nothing when there is none.
  static void clear();

  // --- Byte streams to double-byte GBK -------------------------------------------------------
  // src      srclen bytes, not NUL-terminated; a 0x00 byte is a character. With srclen 0 or less
  //          nothing is read
  // dest     destlen bytes; twice srclen always suffices. A last odd byte is not used
  // Returns  the bytes written, always even, without a terminator. When the output is full the
  //          conversion stops before the first character that does not fit, and nothing tells
  //          how much of the input was used. There is no error result

  // GBK to simplified characters. Undefined codes become CHINESE_SPACE_CHAR. The bytes 80 and FF
  // in lead position, and a lead byte that is the last byte, are dropped.
  int t2sgbk(const char* src, int srclen, char* dest, int destlen);

  // Big5 to simplified characters. A code without a character becomes CHINESE_SPACE_CHAR. Dropped
  // bytes as in t2sgbk.
  int b52sgbk(const char* src, int srclen, char* dest, int destlen);

  // --- Unicode to GBK, simplified characters -------------------------------------------------
  // As above, except as noted. U+FEFF and every code point without a GBK form are dropped.

  // UCS-2 in the host's byte order to GBK text: ASCII stays one byte.
  // srclen   code units; a surrogate is looked up on its own and has no GBK form
  // destlen  bytes; two for each unit always suffice. A two-byte character that meets one byte
  //          of room ends the conversion
  int uc2sgbk(const unsigned short* src, int srclen, char* dest, int destlen);

  // UCS-2 in the host's byte order to double-byte GBK.
  // srclen   code units
  int uc2sgbk_DB(const unsigned short* src, int srclen, char* dest, int destlen);

  // UTF-8 to double-byte GBK, tolerant of damage: a lead byte that lost its top bit is restored,
  // a three-byte character that was cut off by another one is skipped, and stray bytes 80..FF
  // are dropped before the first ASCII byte of the call and read as U+0080..U+00FF behind it
  // (those without a GBK form give 3F 3F). Four-byte sequences are not recognised. A sequence
  // cut by the end of the input ends the conversion.
  int utf82sgbk(const char* src, int srclen, char* dest, int destlen);

  // --- HZ, the 7-bit form of GB 2312, to GBK -------------------------------------------------
  // src      srclen bytes, starting in ASCII mode in every call

  // To double-byte GBK, simplified characters; sizes and result as for t2sgbk. An unknown escape
  // is dropped with the byte behind its tilde; a pair of 8-bit bytes in ASCII mode is copied.
  int hz2sgbk(const char* src, int srclen, char* dest, int destlen);

  // To GBK text: no table, no check; an unknown escape is kept.
  // destlen  bytes; srclen always suffices. A full output may end in the first byte of a
  //          character, counted in the result
  int hzgb2gbk(const char* src, int srclen, char* dest, int destlen);

  // --- GBK text to gchar_t arrays ------------------------------------------------------------
  // src      GBK text ended by a NUL. Single bytes are widened and undefined codes become
  //          CHINESE_SPACE_CHAR; 80 and FF in lead position are dropped; a lead byte directly
  //          before the NUL counts as a character with trail byte 00
  // dest     destlen elements, terminator included; strlen(src) + 1 always suffice
  // ifcase   also folds case with toLowerCase, after the mapping
  // Returns  the number of elements before the terminating 0, or -1 when they do not all fit;
  //          dest then holds those that did fit and no terminator

  // Traditional to simplified characters.
  int t2sgchar(const char* src, gchar_t* dest, int destlen, bool ifcase);

  // The same, but FD A1 and FD A2 are dropped where a character starts.
  int t2sgchar_cache(const char* src, gchar_t* dest, int destlen, bool ifcase);

  // Defined double-byte characters stay as they are.
  int dbc2gchar(const char* src, gchar_t* dest, int destlen, bool ifcase);

  // --- GBK text to Big5 ----------------------------------------------------------------------
  // Full-width ASCII is folded to ASCII as by sbc2dbc, here with the full-width yen sign as "$";
  // every other double-byte character becomes its Big5 code, or A1 BC (a white square) when
  // Big5 has none.
  // src      GBK text ended by a NUL; 80 and a lead byte directly before the NUL are dropped
  // dest     destlen bytes; strlen(src) + 2 always suffice. Text of destlen - 2 bytes and more
  //          that goes on is cut and ended with "...", as by sbc2dbc
  // ifcase   Latin capitals become small letters; other alphabets stay as they are
  // Returns  the bytes written before the NUL; 0 for destlen 0 or less, which writes nothing
  int gchar2big5(const char* src, char* dest, int destlen, bool ifcase);

  // --- One entry of a table ------------------------------------------------------------------

  // The unfiltered table entry of a UCS-2 code unit: its character in double-byte GBK, or 0x3F3F
  // when it has none.
  gchar_t getucgvalue(unsigned short uc);

  // --- Without tables: may be called at any time ---------------------------------------------

  // The free functions of the same names, below.
  static int sbc2dbc(const char* src, char* dest, int destlen, bool ifcase);
  static void sbctoLowercase(gchar_t* pbuffer);

  // Full-width a..z to A..Z; anything else comes back unchanged.
  static gchar_t gtoUppercase(gchar_t c);
  // toLowerCase, for callers that want it exported.
  static gchar_t gtoLowercase(gchar_t c);

 private:
  EncodingConvertor();
  EncodingConvertor(const EncodingConvertor&) = delete;
  EncodingConvertor& operator=(const EncodingConvertor&) = delete;

  int initialize(const char* pathname);
  void setANSI(char (*ctable)[2]);

  // 65,536 entries of two bytes each, indexed by lead + 256 * trail (or a single byte, or a UCS-2
  // code unit); an entry holds the output character's bytes in output order.
  char b2gtable[65536][2];
  char t2stable[65536][2];
  char u2gtable[65536][2];
  char g2btable[65536][2];
  // The same tables, seen as gchar_t entries.
  const unsigned short* pu16b2gtbl;
  const unsigned short* pu16t2stbl;
  const unsigned short* pu16u2gtbl;
  const unsigned short* pu16g2btbl;

  static EncodingConvertor* instance;
};

// ---------------------------------------------------------------------------------------------
// Single characters and arrays of them.

// Makes the full-width Latin capitals of an array small, in place. The array ends at the first
// element whose low byte is 0.
SGBK_API void sbctoLowercase(gchar_t* pbuffer);

// The ASCII byte that a full-width character stands for, 0 when it has none. The ideographic
// space, the full-width yen sign and the full-width macron have none.
SGBK_API char sbcchar2dbc(gchar_t gch);

// ---------------------------------------------------------------------------------------------
// Full-width to half-width.

// Folds GBK text: full-width ASCII becomes ASCII, the ideographic space and every undefined code
// become one ASCII space, the pair space-TAB becomes a TAB, the byte 80 and a lead byte without a
// byte behind it are dropped, the rest is copied.
// src      srclen bytes, 0x00 included; 0 or less is empty
// dest     destsize bytes, the NUL included; srclen + 1 always suffice. Text that does not fit
//          loses its end (at least three bytes, and a word cut short, of up to 16 bytes) and
//          gets "..."; a buffer of less than four bytes gets as many dots as fit
// ifcase   also folds case: ASCII capitals, and double-byte ones with toLowerCase
// Returns  the bytes written before the NUL; 0 for destsize 0 or less, which writes nothing
SGBK_API int sbc2dbc(const char* src, int srclen, char* dest, int destsize, bool ifcase);

// The same for text ended by a NUL. destlen is in bytes; strlen(src) + 1 always suffice.
SGBK_API int sbc2dbc(const char* src, char* dest, int destlen, bool ifcase);

// Folds page text as sbc2dbc does, but writes the full-width markup characters as "&amp;", "&lt;"
// and "&gt;" (ASCII ones are copied), removes DESCRIPTION_CONTENT_SEPARATOR, and keeps a TAB
// behind a space.
// srclen   bytes
// dest     destsize bytes; 5 * srclen / 2 + 3 always suffice. The text may have destsize - 3
//          bytes at most
// Returns  the bytes written before the NUL, or -1 when the text does not fit; dest then holds
//          its beginning without a NUL
SGBK_API int decodelibpage(const char* src, size_t srclen, char* dest, size_t destsize,
                           bool ifcase);

#endif
