// The output of a conversion to double-byte GBK, and how many units still fit.

#ifndef SGBK_STREAM_UNIT_OUTPUT_H
#define SGBK_STREAM_UNIT_OUTPUT_H

#include <algorithm>
#include <cstddef>

#include "core/gbk_bytes.h"

namespace sgbk {

// The write position and the end of the output. Every unit takes two bytes, so a last odd byte is
// not used.
struct UnitOutput {
  char* const begin;
  char* next;
  char* const end;

  UnitOutput(char* dest, int destlen)
      : begin(dest), next(dest), end(destlen > 1 ? dest + (destlen & ~1) : dest) {}

  std::ptrdiff_t room() const { return (end - next) / 2; }
  void write(gchar_t unit) {
    storeUnit(next, unit);
    next += 2;
  }
  int written() const { return static_cast<int>(next - begin); }
};

}  // namespace sgbk

#endif
