// Bytes as rows of a test write them: "41 FD A3".

#ifndef SGBK_TESTS_HEX_H
#define SGBK_TESTS_HEX_H

#include <sstream>
#include <string>

namespace sgbk_test {

inline std::string fromHex(const std::string& hex) {
  std::istringstream in(hex);
  std::string bytes;
  for (unsigned byte; in >> std::hex >> byte;) bytes += static_cast<char>(byte);
  return bytes;
}

inline std::string toHex(const std::string& bytes) {
  std::string hex;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    hex += {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15], ' '};
  }
  return hex;
}

}  // namespace sgbk_test

#endif
