// What the twins have in common: units out of bytes, and a destination of which no byte is written
// outside.

#ifndef SGBK_TESTS_TWIN_WRITER_H
#define SGBK_TESTS_TWIN_WRITER_H

#include "support/twins.h"

namespace sgbk_test {

inline gchar_t pairOf(int lead, int trail) { return static_cast<gchar_t>(lead + 256 * trail); }

inline int at(const std::string& s, size_t i) { return static_cast<unsigned char>(s[i]); }
inline gchar_t at(const Table& table, int code) { return table[static_cast<size_t>(code)]; }

struct Writer {
  Destination to;
  std::string dest = std::string(static_cast<size_t>(to.size > 0 ? to.size : 0), to.fill);
  long n = 0;
  void byte(int b) { dest.at(static_cast<size_t>(n++)) = static_cast<char>(b); }
  void unit(gchar_t u) { byte(u & 0xFF), byte(u >> 8); }
  bool has(long bytes) const { return to.size - n >= bytes; }
  Outcome done(long result) { return {result, dest}; }
};

}  // namespace sgbk_test

#endif
