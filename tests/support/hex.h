// Bytes as tests and the tables in docs/ write them: "41 FD A3".

#ifndef SGBK_TESTS_HEX_H
#define SGBK_TESTS_HEX_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace sgbk_test {

// `step` is 3 where something separates the bytes, 2 where nothing does.
inline std::string fromHex(const std::string& hex, std::size_t step = 3) {
  std::string bytes;
  for (std::size_t i = 0; i < hex.size(); i += step) {
    bytes += static_cast<char>(std::strtoul(hex.substr(i, 2).c_str(), nullptr, 16));
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

// What stands between its backquotes: in hexadecimal or as it is, "3 × `B0 A1`" three times.
inline std::string quoted(const std::string& cell) {
  std::string bytes, before, text;
  std::istringstream parts(cell);
  while (std::getline(parts, before, '`') && std::getline(parts, text, '`')) {
    const bool isRepeated = before.ends_with(" × ");
    const int times = isRepeated ? std::stoi(before.substr(before.find_first_of("0123456789"))) : 1;
    const bool isHex = toHex(fromHex(text)) == text + ' ';
    for (int i = 0; i < times; ++i) bytes += isHex ? fromHex(text) : text;
  }
  return bytes;
}

// The cells of all rows of the tables in docs/ whose header begins so.
inline std::vector<std::vector<std::string>> rowsBelow(const std::string& header) {
  std::vector<std::vector<std::string>> rows;
  for (const auto& page : std::filesystem::directory_iterator(SGBK_FOLDER "/docs")) {
    std::ifstream in(page.path());
    bool inTable = false;
    for (std::string line; std::getline(in >> std::ws, line);) {
      inTable = line.starts_with(header) || (inTable && line.starts_with("|"));
      if (!inTable || line.starts_with(header) || line.starts_with("|---")) continue;
      rows.emplace_back();
      std::istringstream cells(line.substr(1));
      for (std::string cell; std::getline(cells, cell, '|');) rows.back().push_back(cell);
    }
  }
  return rows;
}

}  // namespace sgbk_test

#endif
