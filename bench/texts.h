// The texts measured: prose and pages in the encodings converted.

#ifndef SGBK_BENCH_TEXTS_H
#define SGBK_BENCH_TEXTS_H

#include <cstddef>
#include <string>
#include <vector>

namespace sgbk_bench {

// As bench/make_texts.py makes them: pages are HTML, nearly all ASCII; prose is clauses that are
// mostly ideographs.
enum class Kind { pages, prose };
enum class Script { traditional, simplified };

// A shorter text is learnt by the processor's branch predictor while it is converted again and
// again, and no new text would be converted as fast.
inline constexpr std::size_t kUnlearntCharacters = 500000;

// What is converted, and how many characters it has in any encoding.
struct Text {
  std::string bytes;
  std::size_t characters;
};

class Source {
 public:
  // limit    the most characters to take
  Source(Kind kind, Script script, std::size_t limit);

  // Traditional text in BIG5, GBK, UTF-8 or UTF-16LE, simplified text in HZ. Characters that the
  // text's legacy encodings lack were left out beforehand, so every encoding holds the same.
  Text in(const std::string& encoding) const;

 private:
  std::string utf8_;
  std::size_t characters_;
};

// `text` in pieces of at most `size` bytes, none of them cut within a character. `lengthAt` tells
// how many bytes the character at a position has.
template <class LengthAt>
std::vector<std::string> pieces(const std::string& text, std::size_t size, LengthAt lengthAt) {
  std::vector<std::string> list(1);
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = lengthAt(at);
    if (list.back().size() + length > size) list.emplace_back();
    list.back().append(text, at, length);
    at += length;
  }
  return list;
}

// For pieces of Big5 and GBK text, which outlives the result.
inline auto lengthsOfPairs(const std::string& text) {
  return [&text](std::size_t at) -> std::size_t { return (text[at] & 0x80) != 0 ? 2 : 1; };
}

}  // namespace sgbk_bench

#endif
