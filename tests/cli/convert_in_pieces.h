// Runs the pipeline of the command on a text that arrives in pieces.

#ifndef SGBK_TESTS_CLI_CONVERT_IN_PIECES_H
#define SGBK_TESTS_CLI_CONVERT_IN_PIECES_H

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "loss_report.h"
#include "options.h"
#include "sgbk/EncodingConvertor.h"

namespace cli_test {

EncodingConvertor& converter();

struct Converted {
  std::string text;
  std::string losses;  // "line:offset:hex:reason ", in the order of the input
  std::string summary;

  bool operator==(const Converted&) const = default;
};

// reads  how much each read gives, the last number again and again
Converted convertInPieces(const std::string& text, const cli::Options& options,
                          const std::vector<std::size_t>& reads);
Converted convert(const std::string& text, const cli::Options& options);

// Options with everything that keeps the text as it is.
cli::Options plain(cli::Source from, cli::Target to = cli::Target::gbk);

// Bytes that meet every branch of a decoder sooner or later.
std::string randomText(cli::Source source, std::size_t size, std::mt19937& random);

// The library's double-byte text of a whole input.
std::string libraryText(cli::Source source, const std::string& text);

inline const std::vector<cli::Source> kSources = {cli::Source::big5,   cli::Source::gbk,
                                                  cli::Source::utf8,   cli::Source::ucs2le,
                                                  cli::Source::ucs2be, cli::Source::hz};

}  // namespace cli_test

#endif
