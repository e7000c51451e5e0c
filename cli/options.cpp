#include "options.h"

#include <getopt.h>
#include <sgbk/text.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace cli {
namespace {

[[noreturn]] void refuse(const std::string& message) { throw UsageError(message); }

std::uint64_t numberFrom(const char* option, const char* text) {
  std::uint64_t number = 0;
  const char* const end = text + std::strlen(text);
  const auto [rest, error] = std::from_chars(text, end, number);
  if (rest != end || error != std::errc()) {
    refuse(std::string("--") + option + ": not a number: '" + text + "'");
  }
  return number;
}

// An empty name is a variable that was never set, not a wish for the default.
std::string nameFrom(const char* option, const char* name) {
  if (*name == '\0') refuse(std::string("--") + option + ": the name is empty");
  return name;
}

When whenFrom(const std::string& word) {
  if (word == "auto") return When::automatic;
  if (word == "always") return When::always;
  if (word == "never") return When::never;
  refuse("--progress: neither auto, always nor never: '" + word + "'");
}

using C = Completion;

constexpr OptionRow kOwn[] = {
    {'f', "from", "NAME", C::source, "encoding of the input (auto)",
     [](Options& o, const char* a) { o.from = nameFrom("from", a); }},
    {'t', "to", "NAME", C::target, "encoding of the output (gbk)",
     [](Options& o, const char* a) { o.to = nameFrom("to", a); }},
    {'o', "output", "FILE", C::file, "write FILE, put in place when complete",
     [](Options& o, const char* a) { o.output = nameFrom("output", a); }},
    {'i', "in-place", "[SUFFIX]", C::none, "replace each FILE; with SUFFIX keep the old one",
     [](Options& o, const char* a) {
       o.inPlace = true;
       if (a != nullptr) o.suffix = a;
     }},
    {0, "output-dir", "DIR", C::folder, "write each FILE under its name in DIR",
     [](Options& o, const char* a) { o.outputFolder = nameFrom("output-dir", a); }},
    {0, "files-from", "FILE", C::file, "convert the files named in FILE, one a line",
     [](Options& o, const char* a) { o.list = nameFrom("files-from", a); }},
    {0, "force", nullptr, C::none, "-i also where the text looks like another encoding",
     [](Options& o, const char*) { o.force = true; }},
    {0, "fail-on-loss", nullptr, C::none, "finish, but exit 1 when anything was lost",
     [](Options& o, const char*) { o.failOnLoss = true; }},
    {0, "check", nullptr, C::none, "write nothing, exit 1 when anything would be lost",
     [](Options& o, const char*) { o.check = true; }},
    {0, "report", "FILE", C::file, "write a line about every loss to FILE",
     [](Options& o, const char* a) { o.report = nameFrom("report", a); }},
    {0, "max-reports", "N", C::none, "at most N lines in the report of a file",
     [](Options& o, const char* a) { o.maxReports = numberFrom("max-reports", a); }},
    {0, "explain", "TEXT", C::none, "show what becomes of each character of TEXT, and why",
     [](Options& o, const char* a) { o.explain = a; }},
    {'l', "list", nullptr, C::none, "list the encodings",
     [](Options& o, const char*) { o.encodings = true; }},
    {0, "progress", "WHEN", C::when, "auto, always or never",
     [](Options& o, const char* a) { o.progress = whenFrom(a); }},
    {'q', "quiet", nullptr, C::none, "no account of losses, only errors",
     [](Options& o, const char*) { o.quiet = true; }},
    {'v', "verbose", nullptr, C::none, "an account of every file",
     [](Options& o, const char*) { o.verbose = true; }},
    {'h', "help", nullptr, C::none, "this text", [](Options& o, const char*) { o.help = true; }},
    {'V', "version", nullptr, C::none, "version, and the SHA-256 of the loaded tables",
     [](Options& o, const char*) { o.version = true; }},
};

// What users of iconv type. -c and -s ask for what happens anyway.
constexpr const char* kIdleLetters = "cs";
constexpr option kOtherNames[] = {{"from-code", required_argument, nullptr, 'f'},
                                  {"to-code", required_argument, nullptr, 't'},
                                  {"silent", no_argument, nullptr, 's'}};

// Rows without a letter are told apart by values that no letter has.
constexpr int kFirstLongOnly = 0x100;

std::vector<option> longOptions() {
  std::vector<option> options;
  for (const OptionRow& row : optionTable()) {
    const int kind = row.argument == nullptr    ? no_argument
                     : hasOptionalArgument(row) ? optional_argument
                                                : required_argument;
    const auto number = static_cast<int>(&row - optionTable().data());
    options.push_back({row.name, kind, nullptr,
                       row.letter != 0 ? static_cast<int>(row.letter) : kFirstLongOnly + number});
  }
  options.insert(options.end(), std::begin(kOtherNames), std::end(kOtherNames));
  options.push_back({nullptr, 0, nullptr, 0});
  return options;
}

std::string shortOptions() {
  std::string letters = std::string(":") + kIdleLetters;
  for (const OptionRow& row : optionTable()) {
    if (row.letter == 0) continue;
    letters += row.letter;
    if (row.argument != nullptr) letters += hasOptionalArgument(row) ? "::" : ":";
  }
  return letters;
}

// The row of a value that longOptions() gives, null for none.
const OptionRow* rowOf(int value) {
  if (value >= kFirstLongOnly)
    return &optionTable()[static_cast<std::size_t>(value - kFirstLongOnly)];
  const auto row = std::ranges::find_if(
      optionTable(), [value](const OptionRow& r) { return r.letter != 0 && r.letter == value; });
  return row != optionTable().end() ? &*row : nullptr;
}

// Why getopt_long() stopped at an option.
// found  what it returned
// given  the argument, if it is a long option
std::string mistakeIn(int found, const std::string& given, const std::vector<option>& table) {
  const OptionRow* const row = optopt != 0 ? rowOf(optopt) : nullptr;
  const std::string name = row != nullptr ? std::string("--") + row->name : "";
  if (found == ':') return name + " needs an argument";
  if (row != nullptr) return name + " takes no argument";
  if (optopt != 0) return std::string("unknown option '-") + static_cast<char>(optopt) + "'";
  std::string meant;
  for (const option& each : table) {
    const std::string shown = std::string("--") + (each.name != nullptr ? each.name : "");
    if (each.name != nullptr && shown.starts_with(given)) meant += " " + shown;
  }
  if (meant.empty()) return "unknown option '" + given + "'";
  return "'" + given + "' may be one of" + meant;
}

void addTextOption(Options& o, const OptionRow& row, const char* argument) {
  o.text.emplace_back(row.name,
                      argument != nullptr ? std::optional<std::string>(argument) : std::nullopt);
}

void checkTogether(const Options& o) {
  const auto exclude = [](bool one, bool other, const char* message) {
    if (one && other) refuse(message);
  };
  const bool isMany = o.inPlace || !o.outputFolder.empty();
  const bool isFromStandardInput = std::ranges::count(o.files, "-") != 0;
  exclude(o.inPlace, !o.outputFolder.empty(), "-i and --output-dir exclude one another");
  exclude(isMany, !o.output.empty(), "-o writes one file: no -i or --output-dir");
  exclude(o.check, isMany || !o.output.empty(),
          "--check writes nothing: no -o, -i or --output-dir");
  exclude(isMany, isFromStandardInput, "-i and --output-dir need files, not standard input");
  exclude(o.inPlace, o.from.empty(),
          "-i needs -f, the encoding of the files; -f auto finds it for each of them");
  exclude(o.list == "-", isFromStandardInput, "--files-from=- reads the names from standard input");
  const auto isStandardOutput = [](const std::string& name) {
    return name == "-" || name == "/dev/stdout";
  };
  exclude(isStandardOutput(o.report),
          !o.check && !isMany && (o.output.empty() || isStandardOutput(o.output)),
          "--report=- would mix its lines into the text: use -o, or another file for one of them");
  if (o.suffix.find('/') != std::string::npos) refuse("--in-place: a suffix has no '/'");
}

template <class Names>
void appendList(std::string& text, Names all) {
  std::size_t count = 0;
  for (const sgbk_encoding* row = all(&count); count != 0; ++row, --count) {
    text.append("  ").append(row->name);
    if (*row->note != '\0') text.append(" (").append(row->note).append(")");
    if (*row->aliases != '\0') text.append("\n      ").append(row->aliases);
    text += '\n';
  }
}

std::string helpFor(const OptionRow& row) {
  std::string left = row.letter != 0 ? std::string("  -") + row.letter + ", --" : "      --";
  left += row.name;
  if (row.argument != nullptr) {
    left += hasOptionalArgument(row) ? "[=SUFFIX]" : std::string("=") + row.argument;
  }
  left.resize(std::max<std::size_t>(left.size() + 2, 28), ' ');
  return left + row.help + '\n';
}

}  // namespace

bool hasOptionalArgument(const OptionRow& row) {
  return row.argument != nullptr && row.argument[0] == '[';
}

const std::vector<OptionRow>& optionTable() {
  static const std::vector<OptionRow> table = [] {
    std::vector<OptionRow> rows(std::begin(kOwn), std::end(kOwn));
    std::size_t count = 0;
    for (const sgbk_option* row = sgbk_options(&count); count != 0; ++row, --count) {
      rows.push_back({row->letter, row->name, row->argument, C::none, row->help, nullptr});
    }
    return rows;
  }();
  return table;
}

Options parseOptions(int argc, char** argv) {
  Options options;
  const auto table = longOptions();
  const std::string letters = shortOptions();
  opterr = 0;
  for (int found;
       (found = getopt_long(argc, argv, letters.c_str(), table.data(), nullptr)) != -1;) {
    if (found == '?' || found == ':') refuse(mistakeIn(found, argv[optind - 1], table));
    const OptionRow* const row = rowOf(found);
    if (row == nullptr) continue;
    row->set != nullptr ? row->set(options, optarg) : addTextOption(options, *row, optarg);
  }
  options.files.assign(argv + optind, argv + argc);
  if (options.files.empty() && options.list.empty()) options.files = {"-"};
  if (!options.help && !options.version && !options.encodings && !options.explain) {
    checkTogether(options);
  }
  return options;
}

std::string helpText() {
  std::string text =
      "Usage: sgbk [OPTION]... [FILE]...\n"
      "Convert Chinese text to simplified GBK and say what was lost. Without FILE, or for \"-\",\n"
      "read standard input.\n\n";
  bool isOwn = true;
  for (const OptionRow& row : optionTable()) {
    if (isOwn && row.set == nullptr) text += "\nWhat is done to the text:\n";
    isOwn = row.set != nullptr;
    text += helpFor(row);
  }
  text +=
      "\n--from-code, --to-code, -c, -s, and //IGNORE or //TRANSLIT behind the name of an "
      "encoding\n"
      "are understood as in iconv.\n"
      "\nExit status: 0 done, 1 losses under --strict, --fail-on-loss or --check, or a file that "
      "-i\n"
      "left as it was, 2 usage, 3 input or output failure. See sgbk(1).\n";
  return text;
}

std::string encodingList() {
  std::string text = "From:\n";
  appendList(text, sgbk_sources);
  text += "To:\n";
  appendList(text, sgbk_targets);
  return text;
}

}  // namespace cli
