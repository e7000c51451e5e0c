// Finds text regardless of script (traditional or simplified), width and case: query and text
// become normalized arrays of units, and the search compares numbers.
//
//     find_text QUERY < text.gbk      QUERY in GBK; prints each match on a line
//     find_text -x QUERY < text.gbk   traditional and simplified characters differ

#include <cstring>

#include "text_io.h"

namespace {

std::vector<gchar_t> toUnits(const char* text, bool exact) {
  EncodingConvertor& convertor = *EncodingConvertor::getInstance();
  std::vector<gchar_t> units(64);
  for (;;) {
    const int capacity = static_cast<int>(units.size());
    const int count = exact ? convertor.dbc2gchar(text, units.data(), capacity, true)
                            : convertor.t2sgchar(text, units.data(), capacity, true);
    if (count >= 0) {
      units.resize(static_cast<size_t>(count));
      return units;
    }
    units.resize(units.size() * 2);  // -1: they did not all fit
  }
}

}  // namespace

int main(int argc, char** argv) {
  const bool exact = argc == 3 && std::strcmp(argv[1], "-x") == 0;
  if (argc != (exact ? 3 : 2)) {
    std::cerr << "usage: find_text [-x] QUERY < text.gbk\n";
    return 2;
  }
  const std::string text = readAll(std::cin);
  if (EncodingConvertor::initializeInstance(nullptr) != 0) return 3;
  const std::vector<gchar_t> units = toUnits(text.c_str(), exact);
  const std::vector<gchar_t> query = toUnits(argv[argc - 1], exact);
  EncodingConvertor::clear();

  int found = 0;
  auto line = units.begin();
  for (int number = 1; line != units.end(); ++number) {
    const auto end = std::find(line, units.end(), RETURN_CONVERSION_CHAR);
    for (auto at = line; (at = std::search(at, end, query.begin(), query.end())) != end; ++at) {
      std::cout << number << ':' << at - line + 1 << ": " << halfWidth({line, end}) << '\n';
      ++found;
    }
    line = end == units.end() ? end : end + 1;
  }
  return found > 0 ? 0 : 1;
}
