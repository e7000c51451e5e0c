// The options of the command: one table for parsing, help and completion.

#ifndef SGBK_CLI_OPTIONS_H
#define SGBK_CLI_OPTIONS_H

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "encodings.h"

namespace cli {

// A mistake in the arguments.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum class When { automatic, always, never };

struct Options {
  Source from = Source::automatic;
  Target to = Target::gbk;
  std::string output;  // empty: standard output
  bool inPlace = false;
  std::string suffix;  // of the file that --in-place keeps
  bool entities = false;
  bool simplify = true;
  bool halfWidth = false;
  bool foldCase = false;
  bool trim = false;
  bool html = false;
  std::optional<std::size_t> truncate;
  bool strict = false;
  bool failOnLoss = false;
  bool check = false;
  std::string report;
  std::uint64_t maxReports = UINT64_MAX;
  std::optional<std::string> explain;
  bool list = false;
  When progress = When::automatic;
  bool quiet = false;
  bool verbose = false;
  bool help = false;
  bool version = false;
  std::vector<std::string> files;  // at least one, "-" for standard input
};

// What completes the argument of an option.
enum class Completion { none, file, source, target, when };

struct OptionRow {
  char letter;           // 0 for none
  const char* name;      // without the "--"
  const char* argument;  // its name, null for none; in brackets when it may be left out
  Completion completion;
  const char* help;
  void (*set)(Options& options, const char* argument);
};

std::span<const OptionRow> optionTable();
bool hasOptionalArgument(const OptionRow& row);

// Throws UsageError.
Options parseOptions(int argc, char** argv);

// What --help prints.
std::string helpText();

}  // namespace cli

#endif
