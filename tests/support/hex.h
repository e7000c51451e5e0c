// Bytes as rows of a test write them: "41 FD A3".

#ifndef SGBK_TESTS_HEX_H
#define SGBK_TESTS_HEX_H

#include <string>

namespace sgbk_test {

// `step` is 3 where something separates the bytes, 2 where nothing does.
inline std::string fromHex(const std::string& hex, std::size_t step = 3) {
  std::string bytes;
  for (std::size_t i = 0; i < hex.size(); i += step) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
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
