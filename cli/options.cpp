#include "options.h"

#include <getopt.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <filesystem>

namespace cli {
namespace {

[[noreturn]] void refuse(const std::string& message) { throw UsageError(message); }

std::uint64_t numberFrom(const char* option, const char* text, std::uint64_t least,
                         std::uint64_t most) {
  std::uint64_t number = 0;
  const char* const end = text + std::strlen(text);
  const auto [rest, error] = std::from_chars(text, end, number);
  if (rest != end || error != std::errc() || number < least || number > most) {
    refuse(std::string("--") + option + ": not a number from " + std::to_string(least) + " to " +
           std::to_string(most) + ": '" + text + "'");
  }
  return number;
}

void setFrom(Options& o, const char* name) {
  const auto source = sourceNamed(name);
  if (!source) refuse(std::string("unknown encoding '") + name + "'; sgbk --list shows the names");
  o.from = *source;
}

void setTo(Options& o, const char* name) {
  const auto target = targetNamed(name);
  if (!target) refuse(std::string("cannot write '") + name + "'; sgbk --list shows the names");
  o.to = *target;
}

// An empty name is a variable that was never set, not a wish for standard output.
std::string fileFrom(const char* option, const char* name) {
  if (*name == '\0') refuse(std::string("--") + option + ": the name of the file is empty");
  return name;
}

void setProgress(Options& o, const char* when) {
  const std::string_view word = when;
  if (word == "auto") {
    o.progress = When::automatic;
  } else if (word == "always") {
    o.progress = When::always;
  } else if (word == "never") {
    o.progress = When::never;
  } else {
    refuse(std::string("--progress: neither auto, always nor never: '") + when + "'");
  }
}

using C = Completion;

// Longer lines come in parts, and are cut as if a part were all.
constexpr std::uint64_t kLongestCut = 1'000'000;

constexpr OptionRow kOptions[] = {
    {'f', "from", "NAME", C::source, "encoding of the input (auto)", setFrom},
    {'t', "to", "NAME", C::target, "encoding of the output (gbk)", setTo},
    {'o', "output", "FILE", C::file, "write FILE, put in place when complete",
     [](Options& o, const char* a) { o.output = fileFrom("output", a); }},
    {'i', "in-place", "[SUFFIX]", C::none, "replace each FILE; with SUFFIX keep the old one",
     [](Options& o, const char* a) {
       o.inPlace = true;
       if (a != nullptr) o.suffix = a;
     }},
    {'E', "entities", nullptr, C::none, "resolve &name; and &#number;",
     [](Options& o, const char*) { o.entities = true; }},
    {'S', "simplify", nullptr, C::none, "traditional to simplified characters (the default)",
     [](Options& o, const char*) { o.simplify = true; }},
    {0, "no-simplify", nullptr, C::none, "keep traditional characters (from gbk and hz)",
     [](Options& o, const char*) { o.simplify = false; }},
    {'W', "half-width", nullptr, C::none, "full-width letters, digits and marks to ASCII",
     [](Options& o, const char*) { o.halfWidth = true; }},
    {'C', "fold-case", nullptr, C::none, "capitals to small letters",
     [](Options& o, const char*) { o.foldCase = true; }},
    {'P', "trim-punct", nullptr, C::none, "thin out blanks, decoration and long runs of marks",
     [](Options& o, const char*) { o.trim = true; }},
    {0, "html", nullptr, C::none, "-W, but full-width & < > become references",
     [](Options& o, const char*) { o.html = true; }},
    {0, "truncate", "N", C::none, "cut lines of more than N bytes, ending them with ...",
     [](Options& o, const char* a) { o.truncate = numberFrom("truncate", a, 1, kLongestCut); }},
    {0, "strict", nullptr, C::none, "stop before the line of the first loss, exit 1",
     [](Options& o, const char*) { o.strict = true; }},
    {0, "fail-on-loss", nullptr, C::none, "finish, but exit 1 when anything was lost",
     [](Options& o, const char*) { o.failOnLoss = true; }},
    {0, "check", nullptr, C::none, "write nothing, exit 1 when anything would be lost",
     [](Options& o, const char*) { o.check = true; }},
    {0, "report", "FILE", C::file, "write a line about every loss to FILE",
     [](Options& o, const char* a) { o.report = fileFrom("report", a); }},
    {0, "max-reports", "N", C::none, "at most N lines in the report of a file",
     [](Options& o, const char* a) { o.maxReports = numberFrom("max-reports", a, 0, UINT64_MAX); }},
    {0, "explain", "TEXT", C::none, "show what becomes of each character of TEXT, and why",
     [](Options& o, const char* a) { o.explain = a; }},
    {'l', "list", nullptr, C::none, "list the encodings",
     [](Options& o, const char*) { o.list = true; }},
    {0, "progress", "WHEN", C::when, "auto, always or never", setProgress},
    {'q', "quiet", nullptr, C::none, "no account of losses, only errors",
     [](Options& o, const char*) { o.quiet = true; }},
    {'v', "verbose", nullptr, C::none, "an account of every file",
     [](Options& o, const char*) { o.verbose = true; }},
    {'h', "help", nullptr, C::none, "this text", [](Options& o, const char*) { o.help = true; }},
    {'V', "version", nullptr, C::none, "version, and the SHA-256 of the loaded tables",
     [](Options& o, const char*) { o.version = true; }},
};

// Rows without a letter are told apart by values that no letter has.
constexpr int kFirstLongOnly = 0x100;

std::vector<option> longOptions() {
  std::vector<option> options;
  for (const OptionRow& row : kOptions) {
    const int kind = row.argument == nullptr    ? no_argument
                     : hasOptionalArgument(row) ? optional_argument
                                                : required_argument;
    options.push_back(
        {row.name, kind, nullptr, kFirstLongOnly + static_cast<int>(&row - kOptions)});
  }
  options.push_back({nullptr, 0, nullptr, 0});
  return options;
}

std::string shortOptions() {
  std::string letters = ":";
  for (const OptionRow& row : kOptions) {
    if (row.letter == 0) continue;
    letters += row.letter;
    if (row.argument != nullptr) letters += hasOptionalArgument(row) ? "::" : ":";
  }
  return letters;
}

// By any spelling, also of a file that is not there yet. Devices and pipes may serve twice.
bool nameOneFile(const std::string& one, const std::string& other) {
  namespace fs = std::filesystem;
  if (one == other) return true;
  std::error_code error;
  if (fs::exists(one, error)) {
    return fs::is_regular_file(one, error) && fs::equivalent(one, other, error);
  }
  const auto place = [&](const std::string& path) {
    return fs::weakly_canonical(fs::absolute(path, error), error);
  };
  return !other.empty() && place(one) == place(other) && !error;
}

void checkTogether(const Options& o) {
  if (!o.simplify && o.from != Source::gbk && o.from != Source::hz) {
    refuse(
        "--no-simplify works with -f gbk and -f hz only: the other tables simplify by "
        "themselves");
  }
  if (o.to == Target::gbkWide && (o.halfWidth || o.html)) {
    refuse("-t gbk-wide would undo --half-width and --html");
  }
  if (o.inPlace && !o.output.empty()) refuse("-i and -o exclude one another");
  if (o.check && (o.inPlace || !o.output.empty())) refuse("--check writes nothing: no -i or -o");
  if (o.inPlace && std::count(o.files.begin(), o.files.end(), "-") != 0) {
    refuse("-i needs files, not standard input");
  }
  if (!o.report.empty() && nameOneFile(o.report, o.output)) {
    refuse("--report and -o name the same file");
  }
  if (o.suffix.find('/') != std::string::npos) refuse("--in-place: a suffix has no '/'");
}

}  // namespace

bool hasOptionalArgument(const OptionRow& row) {
  return row.argument != nullptr && row.argument[0] == '[';
}

std::span<const OptionRow> optionTable() { return kOptions; }

Options parseOptions(int argc, char** argv) {
  Options options;
  const auto table = longOptions();
  const std::string letters = shortOptions();
  opterr = 0;
  for (int found;
       (found = getopt_long(argc, argv, letters.c_str(), table.data(), nullptr)) != -1;) {
    if (found == '?' || found == ':') {
      const std::string given = argv[optind - 1];
      const std::string shown =
          given.starts_with("--") ? given : std::string("-") + static_cast<char>(optopt);
      refuse(found == ':' ? shown + " needs an argument"
                          : "unknown or ambiguous option '" + shown + "'");
    }
    const auto* const row =
        found >= kFirstLongOnly
            ? &kOptions[found - kFirstLongOnly]
            : std::find_if(std::begin(kOptions), std::end(kOptions),
                           [found](const OptionRow& r) { return r.letter == found; });
    row->set(options, optarg);
  }
  options.files.assign(argv + optind, argv + argc);
  if (options.files.empty()) options.files = {"-"};
  if (!options.help && !options.version && !options.list && !options.explain) {
    checkTogether(options);
  }
  return options;
}

std::string helpText() {
  std::string text =
      "Usage: sgbk [OPTION]... [FILE]...\n"
      "Convert Chinese text to simplified GBK and say what was lost. Without FILE, or for \"-\",\n"
      "read standard input.\n\n";
  for (const OptionRow& row : kOptions) {
    std::string left = row.letter != 0 ? std::string("  -") + row.letter + ", --" : "      --";
    left += row.name;
    if (row.argument != nullptr) {
      left += hasOptionalArgument(row) ? "[=SUFFIX]" : std::string("=") + row.argument;
    }
    left.resize(std::max<std::size_t>(left.size() + 2, 28), ' ');
    text += left + row.help + '\n';
  }
  text +=
      "\nExit status: 0 done, 1 losses under --strict, --fail-on-loss or --check, 2 usage,\n"
      "3 input or output failure. See sgbk(1).\n";
  return text;
}

}  // namespace cli
