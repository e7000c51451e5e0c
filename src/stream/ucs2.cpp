// UCS-2 to GBK, with ASCII in one byte or in two.

#include "stream/unicode_table.h"
#include "stream/unit_output.h"

int EncodingConvertor::uc2sgbk(const unsigned short* src, int srclen, char* dest, int destlen) {
  if (srclen <= 0) return 0;
  const gchar_t* const table = pu16u2gtbl;
  const unsigned short* in = src;
  const unsigned short* const end = src + srclen;
  char* out = dest;
  char* const outEnd = destlen > 0 ? dest + destlen : dest;
  // A step reads one unit and writes two bytes at most.
  while (std::ptrdiff_t steps = std::min(end - in, (outEnd - out) / 2)) {
    do {
      const unsigned short u = *in++;
      if (u <= 0x7F) {
        *out++ = static_cast<char>(u);
      } else if (const gchar_t unit = table[u]; sgbk::isWritten(u, unit)) {
        sgbk::storeUnit(out, unit);
        out += 2;
      }
    } while (--steps != 0);
  }
  // One byte of room: it waits for an ASCII character, and a two-byte one ends the conversion.
  for (; in != end && out != outEnd; ++in) {
    if (*in <= 0x7F) {
      *out++ = static_cast<char>(*in);
    } else if (sgbk::isWritten(*in, table[*in])) {
      break;
    }
  }
  return static_cast<int>(out - dest);
}

int EncodingConvertor::uc2sgbk_DB(const unsigned short* src, int srclen, char* dest, int destlen) {
  if (srclen <= 0) return 0;
  const gchar_t* const table = pu16u2gtbl;
  const unsigned short* in = src;
  const unsigned short* const end = src + srclen;
  sgbk::UnitOutput out(dest, destlen);
  while (std::ptrdiff_t steps = std::min(end - in, out.room())) {
    do {
      const unsigned short u = *in++;
      const gchar_t unit = table[u];
      if (sgbk::isWritten(u, unit)) out.write(unit);
    } while (--steps != 0);
  }
  return out.written();
}
