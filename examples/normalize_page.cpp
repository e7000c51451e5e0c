// What the library was made for: a page in traditional GBK becomes text for a search index,
// simplified, lower case, one unit per character, without excess blanks and decoration.
//
//     normalize_page < page.gbk.html > text.gbk

#include "entities.h"
#include "markup.h"
#include "text_io.h"

int main() {
  if (EncodingConvertor::initializeInstance(nullptr) != 0) {
    std::cerr << "no memory for the tables\n";
    return 3;
  }
  const std::string text = withoutEntities(withoutMarkup(readAll(std::cin)));

  // The array conversions read up to a NUL. One unit per byte is always enough.
  std::vector<gchar_t> units(text.size() + 1);
  const int count = EncodingConvertor::getInstance()->t2sgchar(
      text.c_str(), units.data(), static_cast<int>(units.size()), true);
  EncodingConvertor::clear();

  // Both lengths of trimgPunc include the 0 that ends the array; the count above does not.
  std::vector<gchar_t> trimmed(units.size());
  const size_t length = trimgPunc(units.data(), static_cast<size_t>(count) + 1, trimmed.data());
  trimmed.resize(length - 1);

  std::cout << halfWidth(trimmed) << '\n';
  std::cerr << count << " characters, " << length - 1 << " after trimming\n";
}
