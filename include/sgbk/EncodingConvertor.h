// sgbk: the process-wide converter, and the folding functions that need none.
//
// Three kinds of text appear below:
//   GBK text          ASCII in one byte, every other character in two
//   double-byte GBK   every character in two bytes: printable ASCII is widened to its full-width
//                     form, blanks and control bytes become CHINESE_SPACE_CHAR, LF and CR become
//                     RETURN_CONVERSION_CHAR, NUL becomes 00 00 and 0x01 becomes 01 20
//   gchar_t array     the same characters, one gchar_t each, ended by a 0 element
//
// Malformed input is never rejected. In GBK and Big5 a lead byte, 81..FE, takes the next byte as
// its trail byte, whatever that byte is: a line feed or "<" too. Nothing is read outside the source
// or written outside the destination, and what follows the result in the destination stays
// untouched, unless the text was cut. Source and destination may not overlap.
//
// What a table gives is told for the tables that come with the library.

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

// One object per process, created by initializeInstance and destroyed by clear. Any number of
// threads may convert with it at once; none may be inside a conversion while clear runs.
class SGBK_API EncodingConvertor {
 public:
  virtual ~EncodingConvertor();

  // Creates the converter and loads its tables; does nothing if it exists already.
  // pathname  ignored; may be null
  // Returns   0 when the converter exists, -1 when there was no memory for it (512 KiB)
  static int initializeInstance(const char* pathname);

  // Returns the converter, or null before initializeInstance and after clear. Takes no lock.
  static EncodingConvertor* getInstance();

  // Destroys the converter; does nothing if there is none.
  static void clear();

  // --- Byte streams to double-byte GBK, simplified characters --------------------------------
  // src      srclen bytes, not NUL-terminated; a 0x00 byte is a character. With srclen 0 or less
  //          nothing is read
  // dest     destlen bytes; 2 * srclen is always enough. A last odd byte is not used
  // Returns  the bytes written, always even, with no terminator. When the output is full, the
  //          conversion stops before the first character that does not fit; how much of the input
  //          was used is not reported. There is no error result

  // From GBK. Undefined codes (isGBKUndefinedChar) become CHINESE_SPACE_CHAR, and so does a pair
  // that is not GBK at all, such as B0 0A. The bytes 80 and FF in lead position, and a lead byte
  // that is the last byte, are dropped.
  int t2sgbk(const char* src, int srclen, char* dest, int destlen);

  // From Big5. A code without a character, or with one that GBK lacks (A3 E1, the euro sign),
  // becomes CHINESE_SPACE_CHAR. Dropped bytes as in t2sgbk.
  int b52sgbk(const char* src, int srclen, char* dest, int destlen);

  // --- Unicode to GBK, simplified characters -------------------------------------------------
  // Size of src, dest and result as above, except as noted. The byte-order mark U+FEFF and every
  // code point without a GBK form are dropped.

  // UCS-2 in the host's byte order to GBK text: ASCII stays one byte.
  // srclen   code units, not bytes; a surrogate is looked up on its own and has no GBK form
  // destlen  bytes; 2 * srclen is always enough. A last odd byte takes an ASCII character; a
  //          two-byte character that meets it ends the conversion
  // Returns  the bytes written, which may be odd
  int uc2sgbk(const unsigned short* src, int srclen, char* dest, int destlen);

  // UCS-2 in the host's byte order to double-byte GBK.
  // srclen   code units, not bytes
  int uc2sgbk_DB(const unsigned short* src, int srclen, char* dest, int destlen);

  // UTF-8 to double-byte GBK. Sequences of one to three bytes are decoded; four-byte sequences are
  // not recognized and come out as other characters or as nothing. In damaged text
  // - a lead byte C0..DF takes the next byte, whatever it is: C3 41 takes the letter with it
  // - a lead byte E0..EF whose next byte is not 80..BF is dropped with the two bytes after it
  //   (E4 E4 B8 AD gives nothing). If the byte after next starts a whole three-byte character, the
  //   first two bytes are dropped and that character is kept (E4 B8 E4 B8 AD gives D6 D0);
  //   otherwise it is taken as the third byte, whatever it is (E4 B8 41 is U+4E01)
  // - any other byte followed by two bytes 80..BF is decoded with them, as a lead byte that lost
  //   its top bits: 64 B8 AD and B4 B8 AD both give D6 D0, and 80 80 80 gives 00 00
  // - any other byte 80..FF is dropped until an ASCII byte has started a character in this call,
  //   and read as U+0080..U+00FF after that; those without a GBK form give 3F 3F
  // A byte C0..EF that lacks its one or two more bytes at the end of the input ends the conversion.
  int utf82sgbk(const char* src, int srclen, char* dest, int destlen);

  // --- HZ, the 7-bit form of GB 2312, to GBK -------------------------------------------------
  // src      srclen bytes; every call starts in ASCII mode. A tilde that is the last byte, and an
  //          odd last byte in GB mode, are dropped. The second byte of a pair in GB mode is taken
  //          whatever it is, a tilde or a line feed too

  // To double-byte GBK, simplified characters; sizes and result as for t2sgbk. An unknown escape
  // is dropped: the tilde and the byte after it. In GB mode undefined codes become
  // CHINESE_SPACE_CHAR. In ASCII mode a byte 81..FF and the byte after it are copied as they are;
  // 80, and a last byte 81..FF, become CHINESE_SPACE_CHAR.
  int hz2sgbk(const char* src, int srclen, char* dest, int destlen);

  // To GBK text, with no table and no check. Of an unknown escape the tilde is kept, and the byte
  // after it is read as usual.
  // dest     destlen bytes; srclen is always enough
  // Returns  the bytes written, with no terminator. When the output is full, its last byte may be
  //          the first byte of a character
  int hzgb2gbk(const char* src, int srclen, char* dest, int destlen);

  // --- GBK text to gchar_t arrays ------------------------------------------------------------
  // src      GBK text ended by a NUL. Single bytes are widened; undefined codes become
  //          CHINESE_SPACE_CHAR; 80 and FF in lead position are dropped; a lead byte directly
  //          before the NUL is a character with the trail byte 00
  // dest     destlen elements, terminator included; strlen(src) + 1 is always enough
  // ifcase   also folds case with toLowerCase, after the mapping
  // Returns  the number of elements before the terminating 0, or -1 when they do not all fit;
  //          dest then holds those that did fit and no terminator

  // Traditional to simplified characters. Pairs that are not GBK become CHINESE_SPACE_CHAR.
  int t2sgchar(const char* src, gchar_t* dest, int destlen, bool ifcase);

  // The same, but FD A1 and FD A2 are dropped where a character starts.
  int t2sgchar_cache(const char* src, gchar_t* dest, int destlen, bool ifcase);

  // Every pair that is not an undefined code stays as it is, even if it is not GBK.
  int dbc2gchar(const char* src, gchar_t* dest, int destlen, bool ifcase);

  // --- GBK text to Big5 ----------------------------------------------------------------------
  // Folds to half-width as sbc2dbc does, so A1 A1 and undefined codes become an ASCII space, and
  // also the full-width yen sign to "$". Every other double-byte character becomes its Big5 code,
  // A1 BC (a white square) when Big5 lacks it, or A1 40 (the ideographic space) when the pair is
  // not GBK. FF is a lead byte here, which is never GBK.
  // src      GBK text ended by a NUL; 80 and a lead byte directly before the NUL are dropped
  // dest     destlen bytes, the NUL included; strlen(src) + 2 is always enough. Text that goes on
  //          after destlen - 2 bytes or more are written is cut as by sbc2dbc
  // ifcase   Latin capitals become lower case; other alphabets keep their case
  // Returns  the bytes written before the NUL; 0 for destlen 0 or less, which writes nothing
  int gchar2big5(const char* src, char* dest, int destlen, bool ifcase);

  // --- One entry of a table ------------------------------------------------------------------

  // The table entry of a UCS-2 code unit as it is: its character in double-byte GBK, or 0x3F3F when
  // it has none.
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

// Makes the full-width Latin capitals of an array lower case, in place. The array ends at the first
// element whose low byte is 0.
SGBK_API void sbctoLowercase(gchar_t* pbuffer);

// The ASCII character that a full-width character stands for, 0 when there is none, as for the
// ideographic space, the full-width yen sign and the full-width macron.
SGBK_API char sbcchar2dbc(gchar_t gch);

// ---------------------------------------------------------------------------------------------
// Full-width to half-width.

// Folds GBK text to half-width. Full-width ASCII becomes ASCII (the full-width yen sign and macron
// stay), the ideographic space and every undefined code become an ASCII space, and the pair
// space-TAB becomes a TAB. The byte 80, and a lead byte that is the last byte, are dropped.
// Everything else is copied. FF is a lead byte here: FF 0A takes the line feed with it.
// src      srclen bytes, 0x00 included; 0 or less is empty
// dest     destsize bytes, the NUL included; srclen + 1 is always enough. Text is cut when its next
//          character does not fit, or anything at all follows destsize - 1 bytes: characters go
//          from its end until three bytes or more are gone, or all; then, if the cut is within a
//          word, up to 16 bytes of letters and digits (by isalnum in the process's locale); then up
//          to three dots, though word and dots never take the first byte. "..." follows. The cut
//          reads backwards and may leave a lead byte alone before the dots. A buffer of less than
//          four bytes gets the dots that fit
// ifcase   also folds case: ASCII capitals, and double-byte ones with toLowerCase
// Returns  the bytes written before the NUL; 0 for destsize 0 or less, which writes nothing
SGBK_API int sbc2dbc(const char* src, int srclen, char* dest, int destsize, bool ifcase);

// The same for text ended by a NUL. destlen is in bytes; strlen(src) + 1 is always enough.
SGBK_API int sbc2dbc(const char* src, char* dest, int destlen, bool ifcase);

// Folds page text as sbc2dbc does, but writes the full-width markup characters as "&amp;", "&lt;"
// and "&gt;" (ASCII ones are copied), removes DESCRIPTION_CONTENT_SEPARATOR, keeps a TAB after a
// space, and fails where sbc2dbc cuts.
// srclen   bytes
// dest     destsize bytes; 5 * srclen / 2 + 3 is always enough. The text may have at most
//          destsize - 3 bytes
// Returns  the bytes written before the NUL, or -1 when the text does not fit; dest then holds
//          the start of it without a NUL
SGBK_API int decodelibpage(const char* src, size_t srclen, char* dest, size_t destsize,
                           bool ifcase);

#endif
