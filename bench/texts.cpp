#include "texts.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "peers.h"

namespace sgbk_bench {
namespace {

bool startsCharacter(char c) { return (c & 0xC0) != 0x80; }

std::string readFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + name);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// The first `limit` characters of UTF-8 text.
std::string firstCharacters(const std::string& text, std::size_t limit) {
  std::size_t end = 0;
  for (std::size_t taken = 0; end < text.size(); ++end) {
    if (startsCharacter(text[end]) && taken++ == limit) break;
  }
  return text.substr(0, end);
}

// `utf8` without the characters that `encoding` lacks.
std::string writableIn(const std::string& encoding, const std::string& utf8) {
  return recode("UTF-8", encoding, recode(encoding, "UTF-8", utf8));
}

}  // namespace

Source::Source(Kind kind, Script script, std::size_t limit) {
  const bool traditional = script == Script::traditional;
  const std::string name =
      std::string(kind == Kind::prose ? "prose" : "pages") + (traditional ? ".zh-tw" : ".zh-cn");
  const std::string text = firstCharacters(readFile(SGBK_BENCH_TEXTS "/" + name), limit);
  utf8_ = traditional ? writableIn("GBK", writableIn("BIG5", text)) : writableIn("GB2312", text);
  characters_ = static_cast<std::size_t>(std::ranges::count_if(utf8_, startsCharacter));
}

Text Source::in(const std::string& encoding) const {
  if (encoding == "UTF-8") return {utf8_, characters_};
  if (encoding == "HZ") {
    std::string hz(4 * utf8_.size(), '\0');
    hz.resize(IcuConverter("UTF-8", "HZ")(utf8_, hz));
    return {hz, characters_};
  }
  return {recode(encoding, "UTF-8", utf8_), characters_};
}

}  // namespace sgbk_bench
