#include "options.h"

#include <getopt.h>

#include <algorithm>
#include <charconv>

namespace cli {
namespace {

// An argument in brackets may be left out.
constexpr sgbk_option kOwn[] = {
    // What users of iconv type, without help. -s asks for what happens anyway, as -c does.
    {"from-code", "NAME", 'f', nullptr},
    {"to-code", "NAME", 't', nullptr},
    {"silent", nullptr, 's', nullptr},
    {"from", "NAME", 'f', "encoding of the input (auto)"},
    {"to", "NAME", 't', "encoding of the output (gbk)"},
    {"output", "FILE", 'o', "write FILE, put in place when complete"},
    {"in-place", "[=SUFFIX]", 'i', "replace each FILE; with SUFFIX keep the old one"},
    {"output-dir", "DIR", 0, "write each FILE under its name in DIR"},
    {"files-from", "FILE", 0, "convert the files named in FILE, one a line"},
    {"force", nullptr, 0, "-i also where the text looks like another encoding"},
    {"fail-on-loss", nullptr, 0, "finish, but exit 1 when anything was lost"},
    {"check", nullptr, 0, "write nothing, exit 1 when anything would be lost"},
    {"report", "FILE", 0, "write a line about every loss to FILE"},
    {"max-reports", "N", 0, "at most N lines in the report of a file"},
    {"explain", "TEXT", 0, "show what becomes of each character of TEXT, and why"},
    {"list", nullptr, 'l', "list the encodings"},
    {"progress", "WHEN", 0, "auto, always or never"},
    {"quiet", nullptr, 'q', "no summary of losses, only errors"},
    {"verbose", nullptr, 'v', "a summary of every file"},
    {"help", nullptr, 'h', "this text"},
    {"version", nullptr, 'V', "version, and the SHA-256 of the loaded tables"},
};

bool isOptional(const char* argument) { return argument != nullptr && *argument == '['; }

[[noreturn]] void refuse(const std::string& message) { throw UsageError(message); }

// The tables as getopt_long() wants them, row by row. Options without a letter are told apart by
// values that no letter has.
struct Parser {
  std::vector<sgbk_option> rows{std::begin(kOwn), std::end(kOwn)};
  std::string letters = ":c";
  std::vector<option> names;

  Parser() {
    rows.insert(rows.end(), textOptions().begin(), textOptions().end());
    for (const sgbk_option& row : rows) {
      const int kind = row.argument == nullptr ? no_argument : 1 + isOptional(row.argument);
      const int value = row.letter != 0 ? row.letter : 0x100 + static_cast<int>(names.size());
      names.push_back({row.name, kind, nullptr, value});
      if (row.letter != 0) letters += row.letter + std::string(static_cast<std::size_t>(kind), ':');
    }
    names.push_back({nullptr, 0, nullptr, 0});
  }

  // Null for none. The last of several names is the one that is told.
  const sgbk_option* rowOf(int value) const {
    for (std::size_t i = rows.size(); i-- != 0;) {
      if (names[i].val == value) return &rows[i];
    }
    return nullptr;
  }

  // Why getopt_long() stopped.
  // found  what it returned
  // given  the argument, if it is a long option
  std::string mistake(int found, const std::string& given) const {
    const sgbk_option* const row = rowOf(optopt);
    if (row != nullptr) {
      return std::string("--") + row->name +
             (found == ':' ? " needs an argument" : " takes no argument");
    }
    if (optopt != 0) return std::string("unknown option '-") + static_cast<char>(optopt) + "'";
    std::string meant;
    for (const sgbk_option& each : rows) {
      const std::string shown = std::string("--") + each.name;
      if (shown.starts_with(given)) meant += " " + shown;
    }
    if (meant.empty()) return "unknown option '" + given + "'";
    return "'" + given + "' may be one of" + meant;
  }
};

void check(const Options& o) {
  for (const char* const alone : {"help", "version", "list", "explain"}) {
    if (o.has(alone)) return;
  }
  const auto exclude = [](bool one, bool other, const char* message) {
    if (one && other) refuse(message);
  };
  for (const sgbk_option& row : kOwn) {
    // An empty name is a variable that was never set, not a wish for the default.
    const bool isNamed = row.argument != nullptr && !isOptional(row.argument) && o.has(row.name);
    if (isNamed && o.value(row.name).empty()) refuse(std::string("--") + row.name + " is empty");
  }
  const bool isFromStandardInput = std::ranges::count(o.files, "-") != 0;
  exclude(o.has("in-place"), o.has("output-dir"), "-i and --output-dir exclude one another");
  exclude(o.has("output"), o.isEach(), "-o writes one file: no -i or --output-dir");
  exclude(o.has("check"), o.isEach() || o.has("output"),
          "--check writes nothing: no -o, -i or --output-dir");
  exclude(o.isEach(), isFromStandardInput, "-i and --output-dir need files, not standard input");
  exclude(o.has("in-place"), !o.has("from"),
          "-i needs -f, the encoding of the files; -f auto finds it for each of them");
  exclude(o.value("files-from") == "-", isFromStandardInput,
          "--files-from=- reads the names from standard input");
  exclude(o.value("report") == "-" || o.value("report") == "/dev/stdout", o.isToStandardOutput(),
          "--report=- would mix its lines into the text: use -o, or another file for one of them");
  if (o.value("in-place").find('/') != std::string::npos) refuse("--in-place: a suffix has no '/'");
  const std::string when = o.value("progress", "auto");
  if (when != "auto" && when != "always" && when != "never") {
    refuse("--progress: neither auto, always nor never: '" + when + "'");
  }
}

std::string listOf(const sgbk_encoding* (*all)(std::size_t*)) {
  std::size_t count = 0;
  std::string text;
  for (const sgbk_encoding* row = all(&count); count != 0; ++row, --count) {
    text.append("  ").append(row->name);
    if (*row->note != '\0') text.append(" (").append(row->note).append(")");
    if (*row->aliases != '\0') text.append("\n      ").append(row->aliases);
    text += '\n';
  }
  return text;
}

std::string helpFor(std::span<const sgbk_option> rows) {
  std::string text;
  for (const sgbk_option& row : rows) {
    if (row.help == nullptr) continue;
    std::string left = row.letter != 0 ? std::string("  -") + row.letter + ", --" : "      --";
    left += row.name;
    if (row.argument != nullptr)
      left.append(isOptional(row.argument) ? "" : "=").append(row.argument);
    left.resize(std::max<std::size_t>(left.size() + 2, 28), ' ');
    text += left + row.help + '\n';
  }
  return text;
}

}  // namespace

bool Options::has(const std::string& name) const {
  return std::ranges::any_of(given, [&](const auto& each) { return each.first == name; });
}

std::string Options::value(const std::string& name, const std::string& otherwise) const {
  const auto last = std::find_if(given.rbegin(), given.rend(),
                                 [&](const auto& each) { return each.first == name; });
  return last != given.rend() ? last->second : otherwise;
}

std::uint64_t Options::number(const std::string& name, std::uint64_t otherwise) const {
  const std::string text = value(name);
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), otherwise);
  if (has(name) && (rest != text.data() + text.size() || error != std::errc())) {
    refuse("--" + name + ": not a number: '" + text + "'");
  }
  return otherwise;
}

bool Options::isToStandardOutput() const {
  const std::string output = value("output", "-");
  return !has("check") && !isEach() && (output == "-" || output == "/dev/stdout");
}

std::span<const sgbk_option> textOptions() {
  std::size_t count = 0;
  const sgbk_option* const rows = sgbk_options(&count);
  return {rows, count};
}

Options parseOptions(int argc, char** argv) {
  Options options;
  const Parser parser;
  opterr = 0;
  for (int found; (found = getopt_long(argc, argv, parser.letters.c_str(), parser.names.data(),
                                       nullptr)) != -1;) {
    if (found == '?' || found == ':') refuse(parser.mistake(found, argv[optind - 1]));
    if (const sgbk_option* const row = parser.rowOf(found)) {
      options.given.emplace_back(row->name, optarg != nullptr ? optarg : "");
    }
  }
  options.files.assign(argv + optind, argv + argc);
  if (options.files.empty() && !options.has("files-from")) options.files = {"-"};
  check(options);
  return options;
}

std::string helpText() {
  return R"(Usage: sgbk [OPTION]... [FILE]...
Convert Chinese text to simplified GBK and say what was lost. Without FILE, or for "-",
read standard input.

)" + helpFor(kOwn) +
         "\nWhat is done to the text:\n" + helpFor(textOptions()) + R"(
--from-code, --to-code, -c, -s, and //IGNORE or //TRANSLIT after the name of an encoding
are understood as in iconv.

Exit status: 0 done, 1 losses under --strict, --fail-on-loss or --check, or a file that
-i left as it was, 2 usage, 3 input or output failure. See sgbk(1).
)";
}

std::string encodingList() {
  return "From:\n" + listOf(sgbk_sources) + "To:\n" + listOf(sgbk_targets);
}

}  // namespace cli
