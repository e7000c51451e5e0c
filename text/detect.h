// Finds the encoding of an input from its bytes alone, however they are cut.

#ifndef SGBK_TEXT_DETECT_H
#define SGBK_TEXT_DETECT_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "decoder.h"

namespace sgbk::text {

class Detector {
 public:
  // What is not decided by then never is.
  static constexpr std::size_t kMost = 1 << 18;

  struct Verdict {
    std::size_t ascii = 0;         // bytes at the beginning that are ASCII in any case
    std::optional<Source> source;  // of all that follows them
    bool isRefused = false;
  };

  Detector();

  // held   the input so far, but for what earlier verdicts said is ASCII
  // ended  nothing follows
  Verdict look(std::string_view held, bool ended);

  // After a refusal: what somebody can do about it.
  std::string advice() const;

 private:
  // The text so far as it would be in one encoding.
  struct Trial {
    explicit Trial(Source source, Codes codes);
    // areWhole  no character is cut off at the end
    void add(std::string_view lines, bool areWhole);
    std::uint64_t lost() const { return account->lost(); }
    std::uint64_t malformed() const { return account->counts().reasons[SGBK_MALFORMED]; }

    Source source;
    std::unique_ptr<Buffer> out;
    std::unique_ptr<Account> account;
    std::unique_ptr<Decoder> decoder;
  };

  std::size_t asciiPrefix(std::string_view held, bool ended) const;
  bool mayRelease(std::string_view held, std::size_t prefix, bool ended) const;
  void keepHead(std::string_view ascii);
  void add(std::string_view lines, bool areWhole);
  std::optional<Source> decide(std::string_view held, bool ended) const;
  std::optional<Source> decideByCounts() const;
  std::optional<Source> decideByDeclaration(std::string_view held) const;
  std::uint64_t beyondAscii() const { return highBytes_; }

  std::string head_;             // the first bytes of the input, for declarations
  std::size_t released_ = 0;     // bytes that were ASCII
  std::size_t judged_ = 0;       // bytes of `held` that the trials have seen
  std::uint64_t highBytes_ = 0;  // of 80 and more
  std::uint64_t pairs_ = 0;      // in GBK
  std::uint64_t lowTrails_ = 0;  // of these, those that GB 2312 does not have
  std::uint64_t longSequences_ = 0;
  std::uint64_t shortSequences_ = 0;
  Trial big5_, gbk_, utf8_;
  bool isUtf32_ = false;
};

// By the byte-order mark, little-endian without one.
Source ucs2Order(std::string_view start);

}  // namespace sgbk::text

#endif
