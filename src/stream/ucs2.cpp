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
  const auto takeUnit = [&] {
    const unsigned short u = *in++;
    if (u <= 0x7F) {
      *out++ = static_cast<char>(u);
    } else if (const gchar_t unit = table[u]; sgbk::isWritten(u, unit)) {
      sgbk::storeUnit(out, unit);
      out += 2;
    }
  };
  // A step reads one unit and writes two bytes at most.
  while (std::ptrdiff_t steps = std::min(end - in, (outEnd - out) / 2)) {
    while (steps >= sgbk::kBlockUnits) {
      const sgbk::Units codes = sgbk::load<sgbk::Units>(in);
      const sgbk::Units ascii = sgbk::within(codes, 0, 0x7F);
      if (sgbk::everyBit(ascii)) {
        const sgbk::Block bytes = sgbk::lowBytes(codes);
        std::memcpy(out, &bytes, sizeof bytes);
        out += sgbk::kBlockUnits;
        in += sgbk::kBlockUnits;
      } else if (const sgbk::Units units = sgbk::lookUpUnits(table, in);
                 !sgbk::anyBit(ascii) && sgbk::areAllWritten(codes, units)) {
        std::memcpy(out, &units, sizeof units);
        out += 2 * sgbk::kBlockUnits;
        in += sgbk::kBlockUnits;
      } else {
        for (int i = 0; i < sgbk::kBlockUnits; ++i) takeUnit();
      }
      steps -= sgbk::kBlockUnits;
    }
    for (; steps > 0; --steps) takeUnit();
  }
  // One byte of room: an ASCII character takes it, a two-byte character ends the conversion.
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
  const auto takeUnit = [&] {
    const unsigned short u = *in++;
    const gchar_t unit = table[u];
    if (sgbk::isWritten(u, unit)) out.write(unit);
  };
  while (std::ptrdiff_t steps = std::min(end - in, out.room())) {
    while (steps >= sgbk::kBlockUnits) {
      const sgbk::Units units = sgbk::lookUpUnits(table, in);
      if (sgbk::areAllWritten(sgbk::load<sgbk::Units>(in), units)) {
        std::memcpy(out.next, &units, sizeof units);
        out.next += 2 * sgbk::kBlockUnits;
        in += sgbk::kBlockUnits;
      } else {
        for (int i = 0; i < sgbk::kBlockUnits; ++i) takeUnit();
      }
      steps -= sgbk::kBlockUnits;
    }
    for (; steps > 0; --steps) takeUnit();
  }
  return out.written();
}
