// Calls of the library that append to a string.

#ifndef SGBK_CLI_LIBRARY_CALL_H
#define SGBK_CLI_LIBRARY_CALL_H

#include <string>
#include <string_view>

#include "bytes.h"
#include "sgbk/EncodingConvertor.h"

namespace cli {

// A stream conversion from bytes; its output takes twice the input at most.
using StreamConversion = int (EncodingConvertor::*)(const char*, int, char*, int);

// Returns where the new text begins in `out`.
inline std::size_t appendConverted(EncodingConvertor& converter, StreamConversion conversion,
                                   std::string_view in, std::string& out) {
  const std::size_t begin = out.size();
  out.resize(begin + 2 * in.size());
  const int written = (converter.*conversion)(in.data(), static_cast<int>(in.size()),
                                              out.data() + begin, static_cast<int>(2 * in.size()));
  out.resize(begin + static_cast<std::size_t>(written));
  return begin;
}

inline void appendUnit(gchar_t unit, std::string& out) {
  out += static_cast<char>(leadOf(unit));
  out += static_cast<char>(trailOf(unit));
}

// Makes blanks of the codes in double-byte text that are no characters.
inline void blankUndefined(std::string& text, std::size_t begin) {
  for (; begin < text.size(); begin += 2) {
    if (!isGbkCharacter(unitAt(text.data() + begin))) {
      std::memcpy(text.data() + begin, &CHINESE_SPACE_CHAR, sizeof CHINESE_SPACE_CHAR);
    }
  }
}

}  // namespace cli

#endif
