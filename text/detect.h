// Finds the encoding of an input from its bytes alone, however they are cut, and what a page says
// of its own: <meta charset>, http-equiv, and the XML declaration.

#ifndef SGBK_TEXT_DETECT_H
#define SGBK_TEXT_DETECT_H

#include <forward_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "decoder.h"

namespace sgbk::text {

// Declarations count in the first bytes of a page only.
inline constexpr std::size_t kDeclarationBytes = 1024;

// The first encoding declared in `head`, as it is written there; empty when there is none.
std::string_view declaredEncoding(std::string_view head);

// `head` with `name` in place of each encoding that is declared.
std::string withDeclared(std::string_view head, std::string_view name);

class Detector {
 public:
  // What is not decided by then never is.
  static constexpr std::size_t kMost = 1 << 18;

  struct Verdict {
    std::size_t ascii = 0;         // bytes at the beginning that are ASCII in any case
    std::optional<Source> source;  // of all that follows them
    std::string refusal = {};      // why nothing can be found, and what somebody can do about it
  };

  // asked  automatic, or ucs2, of which only the byte order is to be found
  explicit Detector(Source asked);

  // held   the input so far, but for what earlier verdicts said is ASCII
  // ended  nothing follows
  Verdict look(std::string_view held, bool ended);

 private:
  // The text as it would be in one encoding.
  struct Reading {
    explicit Reading(Source readAs);
    // Reads on to the end of `held`.
    void take(std::string_view held, bool ended);
    // How little it is like Chinese text.
    std::uint64_t strangeness() const;
    std::uint64_t bad() const;  // malformed, or of the right shape without a character

    Source source;
    Account account;
    Buffer out;
    std::unique_ptr<Decoder> decoder;
    std::uint64_t beyond = 0;  // characters beyond ASCII
    std::uint64_t rare = 0;    // those of them that few texts have
    std::uint64_t nuls = 0;
    std::uint64_t lowTrails = 0;  // trail bytes of ASCII
  };

  static bool isHz(std::string_view line);
  std::size_t asciiPrefix(std::string_view held, bool ended) const;
  void release(Verdict& verdict, std::string_view ascii);
  void add(std::string_view held, bool ended);
  std::vector<const Reading*> ranked() const;
  std::string advice() const;
  std::optional<Source> decide(std::string_view held, bool ended) const;
  const Reading* declared(std::string_view held) const;

  const Source asked_;
  std::string head_;              // the first bytes of what was ASCII, for declarations
  std::size_t judged_ = 0;        // bytes of `held` that have been read
  std::uint64_t highBytes_ = 0;   // of 80 and more
  std::uint64_t others_ = 0;      // of these, from C4 on: no accents of Western Europe in UTF-8
  std::uint64_t utf8Weight_ = 0;  // how much speaks for UTF-8
  // As UTF-8 and GBK first. This list is all in the header: the memory sanitizer sees its links.
  std::forward_list<Reading> readings_;
};

}  // namespace sgbk::text

#endif
