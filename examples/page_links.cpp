// The links of a page that stay on its site, each with its text: entities resolved, simplified,
// without excess blanks and decoration. It needs no parser, since quotes and angle brackets are
// never the second byte of a character.
//
//     page_links < page.gbk.html > links.gbk

#include "entities.h"
#include "markup.h"
#include "text_io.h"

namespace {

std::string asRead(const std::string& markup) {
  const std::string text = withoutEntities(withoutMarkup(markup));
  std::vector<gchar_t> units(text.size() + 1);
  std::vector<gchar_t> trimmed(text.size() + 1);
  EncodingConvertor::getInstance()->t2sgchar(text.c_str(), units.data(),
                                             static_cast<int>(units.size()), false);
  trimmed.resize(trimgPunc(units.data(), trimmed.data()) - 1);
  std::replace(trimmed.begin(), trimmed.end(), RETURN_CONVERSION_CHAR, CHINESE_SPACE_CHAR);
  return halfWidth(trimmed);
}

std::string attribute(const std::string& tag, const std::string& name) {
  const size_t found = tag.find(name);
  if (found == std::string::npos) return {};
  const size_t value = found + name.size();
  return tag.substr(value, tag.find('"', value) - value);
}

bool staysOnSite(const std::string& target) {
  const std::string path = target.substr(0, target.find('#'));
  return !startsWith(path.c_str(), "http:") && !startsWith(path.c_str(), "https:") &&
         endsWith(path.c_str(), ".html");
}

}  // namespace

int main() {
  const std::string page = readAll(std::cin);
  if (EncodingConvertor::initializeInstance(nullptr) != 0) return 3;
  for (size_t at = 0; (at = page.find("<a ", at)) != std::string::npos;) {
    const size_t text = page.find('>', at);
    const size_t close = page.find("</a>", at);
    if (close == std::string::npos || close < text) break;
    const std::string address = attribute(page.substr(at, text - at), " href=\"");
    if (staysOnSite(address))
      std::cout << address << '\t' << asRead(page.substr(text + 1, close - text - 1)) << '\n';
    at = close;
  }
  EncodingConvertor::clear();
}
