// UTF-8 to double-byte GBK, with repairs for damaged text.

#include "stream/unicode_table.h"
#include "stream/unit_output.h"

using sgbk::Byte;

namespace {

bool isContinuation(Byte b) { return (b & 0xC0) == 0x80; }
bool isTwoByteLead(Byte b) { return (b & 0xE0) == 0xC0; }
bool isThreeByteLead(Byte b) { return (b & 0xF0) == 0xE0; }

class Utf8Decoder {
 public:
  Utf8Decoder(const gchar_t* table, const char* src, int srclen, char* dest, int destlen)
      : table_(table), in_(sgbk::bytesOf(src)), end_(in_ + srclen), out_(dest, destlen) {}

  int convert() {
    while (in_ != end_ && out_.room() > 0) {
      const Byte b = *in_;
      const bool more = isTwoByteLead(b)     ? takeTwoByteGroup()
                        : isThreeByteLead(b) ? takeThreeByteGroup()
                                             : takeSingleByte();
      if (!more) break;
    }
    return out_.written();
  }

 private:
  // Each of these takes what its lead byte asks for, or returns false when the end of the input
  // cuts it off.

  // The byte behind the lead is taken whatever it is.
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
    // The start of a character that was cut off by a whole one.
    if (isThreeByteLead(in_[2]) && left() >= 5 && isContinuation(in_[3]) &&
        isContinuation(in_[4])) {
      in_ += 2;
    }
    writeGroup();
    return true;
  }

  bool takeSingleByte() {
    if (sgbk::isAscii(*in_)) hadAscii_ = true;
    // A lead byte that lost its top bit arrives as ASCII followed by two continuation bytes. It is
    // decoded as if intact, since ASCII never has continuation bytes after it.
    if (left() >= 3 && isContinuation(in_[1]) && isContinuation(in_[2])) {
      writeGroup();
      return true;
    }
    // Text that has had ASCII is taken for Latin-1 where it is no UTF-8.
    if (hadAscii_) out_.write(table_[*in_]);
    in_ += 1;
    return true;
  }

  void writeGroup() {
    const auto codePoint =
        static_cast<unsigned short>((in_[0] & 0x0F) << 12 | (in_[1] & 0x3F) << 6 | (in_[2] & 0x3F));
    const gchar_t unit = table_[codePoint];
    if (sgbk::isWritten(codePoint, unit)) out_.write(unit);
    in_ += 3;
  }

  std::ptrdiff_t left() const { return end_ - in_; }

  const gchar_t* const table_;
  const Byte* in_;
  const Byte* const end_;
  sgbk::UnitOutput out_;
  bool hadAscii_ = false;
};

}  // namespace

int EncodingConvertor::utf82sgbk(const char* src, int srclen, char* dest, int destlen) {
  if (srclen <= 0) return 0;
  return Utf8Decoder(pu16u2gtbl, src, srclen, dest, destlen).convert();
}
