// HZ to GBK. The text starts in ASCII mode; "~{" opens GB mode, "~}" closes it.
//
//                                  hz2sgbk                          hzgb2gbk
//   ASCII byte                     widened                          as it is
//   80, ASCII mode                 its table entry                  as it is
//   81..FF, ASCII mode             copied with the byte after it;   as it is
//                                  as the last byte its table entry
//   "~~"  "~" LF                   the tilde, the line end          the tilde, the line end
//   "~" and another byte           both dropped                     the tilde, then that byte
//   the same in GB mode            both dropped                     the tilde, then that byte as
//                                                                   the first one of a pair
//   GB-mode pair                   simplified; undefined is blank   its top bits set
//   "~" as the last byte, or an
//   odd last byte in GB mode       dropped                          dropped

#include "core/byte_block.h"
#include "core/undefined_codes.h"
#include "sgbk/EncodingConvertor.h"
#include "stream/unit_output.h"

using sgbk::Byte;

namespace {

// The code of a GB-mode pair. The second byte is taken whatever it is, "~" and LF included.
gchar_t gbModePair(const Byte* in) { return sgbk::loadUnit(in) | 0x8080; }

// The top bits of the bytes that are no ASCII or begin an escape.
sgbk::Block stopsInAscii(sgbk::Block block) {
  const sgbk::Block fromTilde = block ^ sgbk::inEveryByte('~');
  return ~((fromTilde + sgbk::inEveryByte(0x7F)) & ~block) & sgbk::inEveryByte(0x80);
}

// The top bits of the GB-mode pairs that are escapes.
sgbk::Block stopsInPairs(sgbk::Block block) {
  const sgbk::Block fromTilde = (block & sgbk::inEveryUnit(0xFF)) ^ sgbk::inEveryUnit('~');
  return ~(fromTilde + sgbk::inEveryUnit(0x7FFF)) & sgbk::inEveryUnit(0x8000);
}

template <class Lookup>
int convertHz(const char* src, int srclen, char* dest, int destlen, const gchar_t* table,
              Lookup lookup) {
  if (srclen <= 0) return 0;
  sgbk::UnitOutput out(dest, destlen);
  const Byte* in = sgbk::bytesOf(src);
  const Byte* const end = in + srclen;
  bool hz_ascii_mode = true;
  // Always inlined, since otherwise the positions would live in memory instead of registers.
  const auto takeStep = [&]() __attribute__((always_inline)) {
    const Byte b = in[0];
    const Byte next = in[1];
    if (b == '~') {
      if (!hz_ascii_mode) {
        hz_ascii_mode = next == '}';
      } else if (next == '{') {
        hz_ascii_mode = false;
      } else if (next == '~' || next == '\n') {
        out.write(table[next]);
      }
      in += 2;
    } else if (!hz_ascii_mode) {
      out.write(lookup(gbModePair(in)));
      in += 2;
    } else if (b <= 0x80) {
      out.write(table[b]);
      in += 1;
    } else {
      out.write(sgbk::loadUnit(in));
      in += 2;
    }
  };
  // A step reads two bytes and writes one unit at most, so this many need no test of the ends.
  while (std::ptrdiff_t steps = std::min((end - in) / 2, out.room())) {
    while (steps >= sgbk::kBlockBytes) {
      const sgbk::Block block = sgbk::loadBlock(in);
      if (hz_ascii_mode && stopsInAscii(block) == 0) {
        sgbk::unrolled<8>([&](int i) { out.write(table[in[i]]); });
        in += sgbk::kBlockBytes;
        steps -= 8;
      } else if (!hz_ascii_mode && stopsInPairs(block) == 0) {
        sgbk::unrolled<4>([&](int i) { out.write(lookup(gbModePair(in + 2 * i))); });
        in += sgbk::kBlockBytes;
        steps -= 4;
      } else {
        takeStep();
        steps -= 1;
      }
    }
    for (; steps > 0; --steps) takeStep();
  }
  if (in != end && out.room() > 0 && hz_ascii_mode && *in != '~') out.write(table[*in]);
  return out.written();
}

}  // namespace

int EncodingConvertor::hz2sgbk(const char* src, int srclen, char* dest, int destlen) {
  return sgbk::withSimplifiedLookup(pu16t2stbl, [&](auto lookup) {
    return convertHz(src, srclen, dest, destlen, pu16t2stbl, lookup);
  });
}

int EncodingConvertor::hzgb2gbk(const char* src, int srclen, char* dest, int destlen) {
  if (srclen <= 0 || destlen <= 0) return 0;
  const Byte* in = sgbk::bytesOf(src);
  const Byte* const end = in + srclen;
  char* out = dest;
  char* const outEnd = dest + destlen;
  bool hz_ascii_mode = true;
  while (in != end && out != outEnd) {
    if (std::min(end - in, outEnd - out) >= 2 * sgbk::kBlockBytes) {
      const sgbk::Block block = sgbk::loadBlock(in);
      const sgbk::Block stops = hz_ascii_mode ? stopsInAscii(block) : stopsInPairs(block);
      const sgbk::Block gbk = block | sgbk::inEveryByte(hz_ascii_mode ? 0 : 0x80);
      // Up to a stop without a jump; what is behind it in the output is written again as it was.
      const int count =
          stops == 0 ? sgbk::kBlockBytes : __builtin_ctzll(stops) / 8 & (hz_ascii_mode ? ~0 : ~1);
      const sgbk::Block behind = sgbk::loadBlock(sgbk::bytesOf(out) + count);
      std::memcpy(out, &gbk, sizeof gbk);
      std::memcpy(out + count, &behind, sizeof behind);
      in += count;
      out += count;
      if (stops == 0) continue;
    }
    const Byte b = in[0];
    if (hz_ascii_mode && b != '~') {
      *out++ = static_cast<char>(b);
      in += 1;
      continue;
    }
    if (end - in == 1) break;
    const Byte next = in[1];
    if (b != '~') {
      *out++ = static_cast<char>(b | 0x80);
      if (out == outEnd) break;
      *out++ = static_cast<char>(next | 0x80);
      in += 2;
    } else if (next == (hz_ascii_mode ? '{' : '}')) {
      hz_ascii_mode = !hz_ascii_mode;
      in += 2;
    } else if (hz_ascii_mode && (next == '~' || next == '\n')) {
      *out++ = static_cast<char>(next);
      in += 2;
    } else {
      *out++ = '~';
      in += 1;
    }
  }
  return static_cast<int>(out - dest);
}
