// Full-width letters, digits and punctuation to ASCII, line by line.
//
//     fold_width title N < text.gbk   half-width, at most N - 1 bytes per line, truncated with
//     "..." fold_width html < text.gbk      half-width, markup characters as entities fold_width
//     big5 < text.gbk      half-width, everything else in Big5

#include <sstream>

#include "text_io.h"

namespace {

std::string title(const std::string& line, int capacity) {
  std::string out(static_cast<size_t>(capacity), '\0');
  const int length =
      sbc2dbc(line.data(), static_cast<int>(line.size()), out.data(), capacity, false);
  return out.substr(0, static_cast<size_t>(length));
}

std::string html(const std::string& line) {
  std::string out(line.size() * 5 / 2 + 3, '\0');
  const int length = decodelibpage(line.data(), line.size(), out.data(), out.size(), false);
  return out.substr(0, static_cast<size_t>(length));
}

std::string big5(const std::string& line) {
  std::string out(line.size() + 2, '\0');
  const int length = EncodingConvertor::getInstance()->gchar2big5(
      line.c_str(), out.data(), static_cast<int>(out.size()), false);
  return out.substr(0, static_cast<size_t>(length));
}

}  // namespace

int main(int argc, char** argv) {
  const std::string form = argc > 1 ? argv[1] : "";
  const int capacity = argc > 2 ? std::atoi(argv[2]) : 0;
  const bool cut = form == "title" && capacity > 0;
  if (!cut && form != "html" && form != "big5") {
    std::cerr << "usage: fold_width title N | html | big5 < text.gbk\n";
    return 2;
  }
  if (EncodingConvertor::initializeInstance(nullptr) != 0) return 3;
  std::istringstream lines(readAll(std::cin));
  for (std::string line; std::getline(lines, line);)
    std::cout << (cut ? title(line, capacity) : form == "html" ? html(line) : big5(line)) << '\n';
  EncodingConvertor::clear();
}
