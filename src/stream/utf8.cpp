// UTF-8 to double-byte GBK, with repairs for damaged text.

#include "core/byte_block.h"
#include "stream/unicode_table.h"
#include "stream/unit_output.h"

using sgbk::Byte;

namespace {

bool isContinuation(Byte b) { return (b & 0xC0) == 0x80; }
bool isTwoByteLead(Byte b) { return (b & 0xE0) == 0xC0; }
bool isThreeByteLead(Byte b) { return (b & 0xF0) == 0xE0; }

// Whether a block begins with a three-byte group, or with two.
bool isGroup(sgbk::Block block) { return (block & 0xC0C0F0) == 0x8080E0; }
bool isTwoGroups(sgbk::Block block) { return (block & 0xC0C0F0C0C0F0) == 0x8080E08080E0; }

// Their code points, in bits 0 to 15 and 24 to 39.
sgbk::Block codePointsOf(sgbk::Block groups) {
  return (groups & 0x00000F00000F) << 12 | (groups & 0x003F00003F00) >> 2 |
         (groups & 0x3F00003F0000) >> 16;
}

class Utf8Decoder {
 public:
  Utf8Decoder(const gchar_t* table, const char* src, int srclen, char* dest, int destlen)
      : table_(table), in_(sgbk::bytesOf(src)), end_(in_ + srclen), out_(dest, destlen) {}

  int convert() {
    while (takeRuns()) {
      const Byte b = *in_;
      const bool more = isTwoByteLead(b)     ? takeTwoByteGroup()
                        : isThreeByteLead(b) ? takeThreeByteGroup()
                                             : takeSingleByte();
      if (!more) break;
    }
    return out_.written();
  }

 private:
  // Takes ASCII and three-byte groups, several at a time, until anything else comes or an end is
  // near. Returns whether input and room are left.
  bool takeRuns() {
    const Byte* in = in_;
    sgbk::UnitOutput out = out_;
    // A step reads three bytes and writes one unit at most, so this many need no test of the ends,
    // and three of them cover a block and the byte after it.
    for (auto steps = std::min(left() / 3, out.room()); steps >= 3;) {
      const sgbk::Block block = sgbk::loadBlock(in);
      if (sgbk::isAllAscii(block) && steps >= 8 && !isContinuation(in[8])) {
        sgbk::unrolled<8>([&](int i) { out.write(table_[in[i]]); });
        ifCurrentASCII = true;
        in += 8;
        steps -= 8;
      } else if (isTwoGroups(block)) {
        const sgbk::Block codePoints = codePointsOf(block);
        write(codePoints, out);
        write(codePoints >> 24, out);
        in += 6;
        steps -= 2;
      } else if (isGroup(block)) {
        write(codePointsOf(block), out);
        in += 3;
        steps -= 1;
      } else if (sgbk::isAscii(in[0]) && !isContinuation(in[1])) {
        out.write(table_[in[0]]);
        ifCurrentASCII = true;
        in += 1;
        steps -= 1;
      } else {
        break;
      }
    }
    in_ = in;
    out_.next = out.next;
    return in_ != end_ && out_.room() > 0;
  }

  // Each of these takes one sequence, or returns false when it is cut off by the end of the input.

  // The byte after the lead byte is taken whatever it is.
  bool takeTwoByteGroup() {
    if (left() < 2) return false;
    const gchar_t unit = table_[(in_[0] & 0x1F) << 6 | (in_[1] & 0x3F)];
    if (unit != sgbk::kUnmapped) out_.write(unit);
    in_ += 2;
    return true;
  }

  bool takeThreeByteGroup() {
    if (left() < 3) return false;
    if (!isContinuation(in_[1])) {
      in_ += 3;
      return true;
    }
    // The start of a character, cut off by a complete one.
    if (isThreeByteLead(in_[2]) && left() >= 5 && isContinuation(in_[3]) &&
        isContinuation(in_[4])) {
      in_ += 2;
    }
    writeGroup();
    return true;
  }

  bool takeSingleByte() {
    if (sgbk::isAscii(*in_)) ifCurrentASCII = true;
    // A lead byte that lost its top bit arrives as ASCII followed by two continuation bytes. It is
    // decoded as if intact, since ASCII never has continuation bytes after it.
    if (left() >= 3 && isContinuation(in_[1]) && isContinuation(in_[2])) {
      writeGroup();
      return true;
    }
    // After the first ASCII, bytes that are not UTF-8 are read as Latin-1.
    if (ifCurrentASCII) out_.write(table_[*in_]);
    in_ += 1;
    return true;
  }

  void writeGroup() {
    write((in_[0] & 0x0Fu) << 12 | (in_[1] & 0x3Fu) << 6 | (in_[2] & 0x3Fu), out_);
    in_ += 3;
  }

  // Only the low 16 bits of `codePoint` count.
  void write(sgbk::Block codePoint, sgbk::UnitOutput& out) const {
    const auto index = static_cast<unsigned short>(codePoint);
    const gchar_t unit = table_[index];
    if (sgbk::isWritten(index, unit)) out.write(unit);
  }

  std::ptrdiff_t left() const { return end_ - in_; }

  const gchar_t* const table_;
  const Byte* in_;
  const Byte* const end_;
  sgbk::UnitOutput out_;
  bool ifCurrentASCII = false;
};

}  // namespace

int EncodingConvertor::utf82sgbk(const char* src, int srclen, char* dest, int destlen) {
  if (srclen <= 0) return 0;
  return Utf8Decoder(pu16u2gtbl, src, srclen, dest, destlen).convert();
}
