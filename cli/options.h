// The options of the command: its own in a table here, those of the text by the library.

#ifndef SGBK_CLI_OPTIONS_H
#define SGBK_CLI_OPTIONS_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace cli {

// A mistake in the arguments.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum class When { automatic, always, never };

struct Options {
  std::string from;  // as given, empty when it is not
  std::string to = "gbk";
  std::vector<std::pair<std::string, std::optional<std::string>>> text;  // those of the library
  std::string output;                                                    // empty: standard output
  bool inPlace = false;
  std::string suffix;  // of the file that --in-place keeps
  std::string outputFolder;
  std::string list;  // a file of names
  bool force = false;
  bool failOnLoss = false;
  bool check = false;
  std::string report;
  std::uint64_t maxReports = UINT64_MAX;
  std::optional<std::string> explain;
  bool encodings = false;
  When progress = When::automatic;
  bool quiet = false;
  bool verbose = false;
  bool help = false;
  bool version = false;
  std::vector<std::string> files;  // "-" for standard input
};

// What completes the argument of an option.
enum class Completion { none, file, folder, source, target, when };

struct OptionRow {
  char letter;           // 0 for none
  const char* name;      // without the "--"
  const char* argument;  // its name, null for none; in brackets when it may be left out
  Completion completion;
  const char* help;
  void (*set)(Options& options, const char* argument);  // null for an option of the library
};

// The options of the command, then those of the library.
const std::vector<OptionRow>& optionTable();
bool hasOptionalArgument(const OptionRow& row);

// Throws UsageError.
Options parseOptions(int argc, char** argv);

// What --help and --list print.
std::string helpText();
std::string encodingList();

}  // namespace cli

#endif
