// Conversions by the pipeline of the command and by the library, and texts for both.

#ifndef SGBK_TESTS_CLI_CONVERSIONS_H
#define SGBK_TESTS_CLI_CONVERSIONS_H

#include <random>
#include <string>
#include <vector>

#include "chunker.h"

namespace cli_test {

struct Converted {
  std::string text;
  std::string losses;  // "line:offset:hex:reason ", in the order of the input
  std::string summary;

  bool operator==(const Converted&) const = default;
};

// options   as on the command line: "-f gbk -E"
// mostRead  how much a read of the input gives at most
// capacity  of the buffer: a longer line comes in parts
Converted convert(const std::string& text, const std::string& options,
                  std::size_t mostRead = SIZE_MAX, std::size_t capacity = cli::Chunker::kCapacity);

// What the operation of the library makes of a whole text, by default with room for all of it.
std::string byLibrary(const std::string& operation, const std::string& text, int capacity = -1);

using Words = std::vector<std::string>;
std::string randomText(const Words& words, std::size_t size, std::mt19937& random);

}  // namespace cli_test

#endif
