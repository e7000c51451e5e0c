// Shared by the example programs: reading a whole file, and printing units as text for a GBK
// terminal or editor.

#ifndef SGBK_EXAMPLES_TEXT_IO_H
#define SGBK_EXAMPLES_TEXT_IO_H

#include <sgbk/EncodingConvertor.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

// Most operations take lengths as int. Larger input must be converted in pieces, as the command
// does.
inline std::string readAll(std::istream& in) {
  std::string bytes(std::istreambuf_iterator<char>(in), {});
  if (bytes.size() > INT_MAX / 4) {
    std::cerr << "more than 512 MiB: use the command sgbk\n";
    std::exit(2);
  }
  return bytes;
}

// The units as GBK text with ASCII in one byte. RETURN_CONVERSION_CHAR needs care: for sbc2dbc it
// is an undefined code, which becomes a space.
inline std::string halfWidth(const std::vector<gchar_t>& units) {
  std::string text;
  auto line = units.begin();
  while (line != units.end()) {
    const auto end = std::find(line, units.end(), RETURN_CONVERSION_CHAR);
    std::string bytes;
    for (auto unit = line; unit != end; ++unit) {
      bytes += static_cast<char>(*unit & 0xFF);
      bytes += static_cast<char>(*unit >> 8);
    }
    std::string folded(bytes.size() + 1, '\0');
    const int length = sbc2dbc(bytes.data(), static_cast<int>(bytes.size()), folded.data(),
                               static_cast<int>(folded.size()), false);
    text.append(folded, 0, static_cast<size_t>(length));
    if (end != units.end()) text += '\n';
    line = end == units.end() ? end : end + 1;
  }
  return text;
}

#endif
