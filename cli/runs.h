// Text of one- and two-byte characters, run by run.

#ifndef SGBK_CLI_RUNS_H
#define SGBK_CLI_RUNS_H

#include <string_view>

#include "bytes.h"

namespace cli {

// Calls ascii(run) and pairs(run) for the runs of one and of two bytes a character in turn.
template <class Ascii, class Pairs>
void forEachRun(std::string_view text, Ascii ascii, Pairs pairs) {
  const Byte* p = bytesOf(text);
  const Byte* const end = p + text.size();
  while (p != end) {
    const Byte* run = skipAscii(p, end);
    if (run != p) ascii(viewOf(p, run));
    p = run;
    run = skipPairs(p, end);
    if (run != p) pairs(viewOf(p, run));
    p = run;
  }
}

}  // namespace cli

#endif
