#include "support/sample_text.h"

#include <iconv.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace sgbk_test {
namespace {

std::string recode(const char* from, const char* to, std::string text) {
  const iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("iconv_open");
  std::string out(4 * text.size() + 16, '\0');
  char* in = text.data();
  char* dest = out.data();
  std::size_t left = text.size();
  std::size_t room = out.size();
  while (left > 0 && iconv(cd, &in, &left, &dest, &room) == static_cast<std::size_t>(-1)) {
    ++in;  // a character that the other encoding lacks
    --left;
  }
  iconv_close(cd);
  out.resize(out.size() - room);
  return out;
}

std::string page() {
  std::ifstream file(SGBK_SAMPLE_PAGE, std::ios::binary);
  if (!file) throw std::runtime_error("no sample page at " SGBK_SAMPLE_PAGE);
  return {std::istreambuf_iterator<char>(file), {}};
}

// GBK to HZ, with what GB 2312 lacks as 8-bit bytes.
std::string toHz(const std::string& gbk) {
  std::string hz;
  for (std::size_t i = 0; i < gbk.size(); ++i) {
    const auto b = static_cast<unsigned char>(gbk[i]);
    if (b < 0x80 || i + 1 == gbk.size()) {
      hz += gbk[i];
      if (b == '~') hz += '~';
      continue;
    }
    const char trail = gbk[++i];
    if (b < 0xA1 || static_cast<unsigned char>(trail) < 0xA1) {
      hz += {gbk[i - 1], trail};
    } else {
      hz += {'~', '{', static_cast<char>(b & 0x7F), static_cast<char>(trail & 0x7F), '~', '}'};
    }
  }
  return hz;
}

enum class Encoding { big5, gbk, utf8, utf16, hz, units, names };

Encoding encodingOf(const Operation& operation) {
  const std::string name = operation.name;
  if (name == "b52sgbk") return Encoding::big5;
  if (name == "utf82sgbk") return Encoding::utf8;
  if (name.starts_with("hz")) return Encoding::hz;
  if (operation.capacity == Capacity::four) return Encoding::names;
  if (operation.source == Source::units) return Encoding::utf16;
  return operation.source == Source::terminatedUnits ? Encoding::units : Encoding::gbk;
}

std::string fromBig5(Encoding encoding, const std::string& big5) {
  if (encoding == Encoding::big5) return big5;
  if (encoding == Encoding::utf8) return recode("BIG5", "UTF-8", big5);
  if (encoding == Encoding::utf16) return recode("BIG5", "UTF-16LE", big5);
  std::string gbk = recode("BIG5", "GBK", big5);
  if (encoding == Encoding::gbk || encoding == Encoding::names) return gbk;
  if (encoding == Encoding::hz) return toHz(gbk);
  std::string units(2 * gbk.size(), '\0');
  const int size = static_cast<int>(units.size());
  units.resize(static_cast<std::size_t>(EncodingConvertor::getInstance()->t2sgbk(
      gbk.data(), static_cast<int>(gbk.size()), units.data(), size)));
  return units;
}

}  // namespace

std::string samplePage(const Operation& operation) {
  return fromBig5(encodingOf(operation), page());
}

std::string randomCharacter(const Operation& operation, std::mt19937& random) {
  if (encodingOf(operation) == Encoding::names) {
    return random() % 2 != 0 ? charEntitySet[random() % 252].pEntity
                             : charaentitymaps[random() % 60].pesc;
  }
  // The 5,401 characters in common use.
  const auto index = static_cast<int>(random() % 5401);
  const int trail = index % 157;
  const std::string big5 = {static_cast<char>(0xA4 + index / 157),
                            static_cast<char>(trail < 63 ? 0x40 + trail : 0x62 + trail)};
  return fromBig5(encodingOf(operation), big5);
}

}  // namespace sgbk_test
