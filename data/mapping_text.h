// Reads the mapping texts: tab-separated fields, one mapping a line, "#" before remarks.

#ifndef SGBK_DATA_MAPPING_TEXT_H
#define SGBK_DATA_MAPPING_TEXT_H

#include <charconv>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// A two-byte code, lead byte first, as people write it.
using Code = unsigned;
using Character = char32_t;
using CharacterMap = std::map<Character, Character>;
using Fields = std::vector<std::string>;

inline Code parseHex(std::string_view text) {
  Code value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (text.empty() || error != std::errc{} || end != text.data() + text.size())
    throw std::runtime_error("not a hexadecimal number: " + std::string(text));
  return value;
}

inline Code parseCode(const std::string& text) {
  const Code code = parseHex(text);
  if (text.size() != 4) throw std::runtime_error("not a two-byte code: " + text);
  return code;
}

// A character is given as itself, in UTF-8, or as U+1234.
inline Character parseCharacter(const std::string& text) {
  if (text.starts_with("U+")) return parseHex(std::string_view(text).substr(2));
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t size = text.size();
  if (size != 3 && size != 4) throw std::runtime_error("not one ideograph or U+ number: " + text);
  Character c = size == 3 ? byte(0) ^ 0xE0u : byte(0) ^ 0xF0u;
  bool wellFormed = c < (size == 3 ? 0x10u : 0x08u);
  for (std::size_t i = 1; i < size; ++i) {
    wellFormed = wellFormed && (byte(i) & 0xC0u) == 0x80u;
    c = c << 6 | (byte(i) & 0x3Fu);
  }
  if (!wellFormed) throw std::runtime_error("not one character in UTF-8: " + text);
  return c;
}

// Calls `use` with the tab-separated fields of each line; names the line when it is refused.
inline void readLines(const std::filesystem::path& path, std::size_t fieldCount,
                      const std::function<void(const Fields&)>& use) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error(path.string() + ": cannot be opened");
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.empty() || line[0] == '#') continue;
    Fields fields(1);
    for (const char c : line) {
      if (c == '\t')
        fields.emplace_back();
      else
        fields.back() += c;
    }
    try {
      if (fields.size() < fieldCount) throw std::runtime_error("fields are missing");
      use(fields);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(path.string() + ":" + std::to_string(number) + ": " + error.what());
    }
  }
  if (in.bad()) throw std::runtime_error(path.string() + ": cannot be read");
}

template <class Key>
void addOnce(std::map<Key, Character>& map, Key key, Character value) {
  if (!map.emplace(key, value).second) throw std::runtime_error("given twice in this file");
}

inline CharacterMap readPairs(const std::filesystem::path& path) {
  CharacterMap map;
  readLines(path, 2,
            [&](const Fields& f) { addOnce(map, parseCharacter(f[0]), parseCharacter(f[1])); });
  return map;
}

inline std::map<Code, Character> readCodes(const std::filesystem::path& path,
                                           bool (*isCode)(Code)) {
  std::map<Code, Character> map;
  readLines(path, 2, [&](const Fields& f) {
    const Code code = parseCode(f[0]);
    if (!isCode(code)) throw std::runtime_error("no code of this encoding: " + f[0]);
    addOnce(map, code, parseCharacter(f[1]));
  });
  return map;
}

#endif
