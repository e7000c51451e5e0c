// The options of the command: its own, and those of the library for the text.

#ifndef SGBK_CLI_OPTIONS_H
#define SGBK_CLI_OPTIONS_H

#include <sgbk/text.h>

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace cli {

// A mistake in the arguments.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Options {
  // Long names with their arguments, empty for none, as they were given.
  std::vector<std::pair<std::string, std::string>> given;
  std::vector<std::string> files;  // "-" for standard input

  bool has(const std::string& name) const;
  // The argument given last, or else `otherwise`.
  std::string value(const std::string& name, const std::string& otherwise = {}) const;
  // Throws UsageError.
  std::uint64_t number(const std::string& name, std::uint64_t otherwise) const;
  // Whether each file has an output of its own.
  bool isEach() const { return has("in-place") || has("output-dir"); }
  bool isToStandardOutput() const;
};

// As sgbk_options() gives them.
std::span<const sgbk_option> textOptions();

// Throws UsageError.
Options parseOptions(int argc, char** argv);

// What they ask for: the texts of --help, --list and --explain, or files to be converted.
std::string helpText();
std::string encodingList();
// text  in the encoding of the locale, and so is the result. Throws UsageError when it is not valid
std::string explanation(const std::string& text);
// Throws UsageError before any file is touched, and FileFailure.
void convertFiles(Options options);

}  // namespace cli

#endif
