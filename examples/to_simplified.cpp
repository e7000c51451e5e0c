// Byte streams in five encodings to simplified GBK.
//
//     to_simplified big5|gbk|utf-8|ucs-2le|hz < page > text.gbk

#include "text_io.h"

namespace {

// UCS-2 operations take code units in the order of the host.
std::vector<unsigned short> codeUnits(const std::string& littleEndian) {
  std::vector<unsigned short> units(littleEndian.size() / 2);
  for (size_t i = 0; i < units.size(); ++i)
    units[i] =
        static_cast<unsigned short>(static_cast<unsigned char>(littleEndian[2 * i]) |
                                    static_cast<unsigned char>(littleEndian[2 * i + 1]) << 8);
  return units;
}

int convert(EncodingConvertor& convertor, const std::string& from, const std::string& src,
            char* dest, int destlen) {
  const int srclen = static_cast<int>(src.size());
  if (from == "big5") return convertor.b52sgbk(src.data(), srclen, dest, destlen);
  if (from == "gbk") return convertor.t2sgbk(src.data(), srclen, dest, destlen);
  if (from == "utf-8") return convertor.utf82sgbk(src.data(), srclen, dest, destlen);
  if (from == "hz") return convertor.hz2sgbk(src.data(), srclen, dest, destlen);
  if (from == "ucs-2le") {
    const std::vector<unsigned short> units = codeUnits(src);
    return convertor.uc2sgbk_DB(units.data(), static_cast<int>(units.size()), dest, destlen);
  }
  return -1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string src = readAll(std::cin);
  if (EncodingConvertor::initializeInstance(nullptr) != 0) return 3;

  // Double-byte output: two bytes per byte of input are always enough, and there is no terminator.
  std::vector<gchar_t> units(src.size());
  const int written = convert(*EncodingConvertor::getInstance(), argc == 2 ? argv[1] : "", src,
                              reinterpret_cast<char*>(units.data()),
                              static_cast<int>(units.size() * sizeof(gchar_t)));
  EncodingConvertor::clear();
  if (written < 0) {
    std::cerr << "usage: to_simplified big5|gbk|utf-8|ucs-2le|hz < page > text.gbk\n";
    return 2;
  }
  units.resize(static_cast<size_t>(written) / sizeof(gchar_t));
  std::cout << halfWidth(units);
}
