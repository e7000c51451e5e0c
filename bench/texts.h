// The texts measured: Debian's reference manual, as it is and as prose, in the encodings converted.

#ifndef SGBK_BENCH_TEXTS_H
#define SGBK_BENCH_TEXTS_H

#include <cstddef>
#include <string>

namespace sgbk_bench {

// Pages are HTML, nearly all ASCII; prose is their clauses that are mostly ideographs.
enum class Kind { pages, prose };
enum class Script { traditional, simplified };

// What is converted, and how many characters it has in any encoding.
struct Text {
  std::string bytes;
  std::size_t characters;
};

class Source {
 public:
  // limit    the most characters to take: of pages the beginning of each
  Source(Kind kind, Script script, std::size_t limit);

  // Traditional text in BIG5, GBK, UTF-8 or UTF-16LE, simplified text in HZ. Characters that the
  // text's legacy encodings lack were left out beforehand, so every encoding holds the same.
  Text in(const std::string& encoding) const;

 private:
  std::string utf8_;
  std::size_t characters_;
};

}  // namespace sgbk_bench

#endif
