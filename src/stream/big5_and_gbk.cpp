// Big5 and traditional GBK to double-byte simplified GBK.

#include "core/byte_block.h"
#include "core/undefined_codes.h"
#include "sgbk/EncodingConvertor.h"
#include "stream/unit_output.h"

using sgbk::Byte;

namespace {

// The loop of both conversions. `ascii` is a table whose first entries are the widened ASCII
// characters; `lookup` returns the unit for a double-byte code.
template <class Lookup>
int convertPairs(const char* src, int srclen, char* dest, int destlen, const gchar_t* ascii,
                 Lookup lookup) {
  if (srclen <= 0) return 0;
  sgbk::UnitOutput out(dest, destlen);
  const Byte* in = sgbk::bytesOf(src);
  const Byte* const end = in + srclen;
  const auto takeCharacter = [&] {
    const Byte b = *in;
    if (sgbk::isAscii(b)) {
      out.write(ascii[b]);
      in += 1;
    } else if (sgbk::isLeadByte(b)) {
      out.write(lookup(sgbk::loadUnit(in)));
      in += 2;
    } else {
      in += 1;
    }
  };
  // A step reads two bytes and writes one unit at most, so this many need no test of the ends.
  while (std::ptrdiff_t steps = std::min((end - in) / 2, out.room())) {
    while (steps >= sgbk::kBlockBytes) {
      const sgbk::Block block = sgbk::loadBlock(in);
      if (sgbk::isAllAscii(block)) {
        sgbk::unrolled<8>([&](int i) { out.write(ascii[in[i]]); });
        in += sgbk::kBlockBytes;
        steps -= 8;
      } else if (sgbk::isAllPairs(block)) {
        sgbk::unrolled<4>([&](int i) { out.write(lookup(sgbk::loadUnit(in + 2 * i))); });
        in += sgbk::kBlockBytes;
        steps -= 4;
      } else {
        for (int i = 0; i < 4; ++i) takeCharacter();
        steps -= 4;
      }
    }
    for (; steps > 0; --steps) takeCharacter();
  }
  // There is no room, or a single byte is left, which is dropped if it is a lead byte.
  if (in != end && out.room() > 0 && sgbk::isAscii(*in)) out.write(ascii[*in]);
  return out.written();
}

}  // namespace

int EncodingConvertor::b52sgbk(const char* src, int srclen, char* dest, int destlen) {
  const gchar_t* const table = pu16b2gtbl;
  return convertPairs(src, srclen, dest, destlen, table,
                      [table](gchar_t code) { return table[code]; });
}

int EncodingConvertor::t2sgbk(const char* src, int srclen, char* dest, int destlen) {
  return sgbk::withSimplifiedLookup(pu16t2stbl, [&](auto lookup) {
    return convertPairs(src, srclen, dest, destlen, pu16t2stbl, lookup);
  });
}
