// Writes the completion of a shell from the tables of options; run by the build.

#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>

#include "options.h"

namespace {

// Calls what(row) for the options of the command and of the library.
template <class What>
void forEachOption(What what) {
  for (const sgbk_option& row : cli::ownOptions()) what(row);
  for (const sgbk_option& row : cli::textOptions()) what(row);
}

// The words that an argument may be, empty for a free one.
std::string wordsFor(const sgbk_option& row) {
  const std::string_view name = row.name;
  if (name == "progress") return "auto always never";
  if (name != "from" && name != "to") return {};
  std::size_t count = 0;
  const sgbk_encoding* encoding = name == "from" ? sgbk_sources(&count) : sgbk_targets(&count);
  std::string words;
  for (; count != 0; ++encoding, --count)
    words += (words.empty() ? "" : " ") + std::string(encoding->name);
  return words;
}

bool isRequired(const sgbk_option& row) {
  return row.argument != nullptr && !cli::isOptional(row.argument);
}

bool isNameOf(const sgbk_option& row, std::string_view what) {
  return row.argument != nullptr && row.argument == what;
}

std::string longName(const sgbk_option& row) { return std::string("--") + row.name; }

std::string forBash() {
  std::string cases, options;
  forEachOption([&](const sgbk_option& row) {
    options += (options.empty() ? "" : " ") + longName(row);
    if (!isRequired(row)) return;
    const std::string words = wordsFor(row);
    cases += "    " + (row.letter != 0 ? std::string("-") + row.letter + "|" : "") + longName(row);
    cases += words.empty()
                 ? ") return ;;\n"
                 : ") COMPREPLY=($(compgen -W \"" + words + "\" -- \"$cur\")); return ;;\n";
  });
  return "# bash completion of sgbk\n"
         "_sgbk() {\n"
         "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
         "  if [ \"$cur\" = = ]; then cur=\n"
         "  elif [ \"$prev\" = = ]; then prev=${COMP_WORDS[COMP_CWORD-2]}\n"
         "  fi\n"
         "  COMPREPLY=()\n"
         "  case $prev in\n" +
         cases +
         "  esac\n"
         "  case $cur in\n"
         "    -*) COMPREPLY=($(compgen -W \"" +
         options +
         "\" -- \"$cur\")) ;;\n"
         "  esac\n"
         "}\n"
         "complete -o default -F _sgbk sgbk\n";
}

// Help texts stand between these quotes and brackets.
std::string escaped(std::string_view help, std::string_view special) {
  std::string result;
  for (const char c : help) {
    if (special.find(c) != std::string_view::npos) result += '\\';
    result += c;
  }
  return result;
}

std::string forZsh() {
  std::string text = "#compdef sgbk\n_arguments -s -S";
  forEachOption([&](const sgbk_option& row) {
    const std::string letter = std::string("-") + row.letter;
    const bool isNone = row.argument == nullptr;
    const std::string name = longName(row) + (isRequired(row) ? "=" : isNone ? "" : "=-");
    const std::string ending = isRequired(row) ? "+" : isNone ? "" : "-";
    text += " \\\n  '";
    if (row.letter != 0) {
      text += "(" + letter + " " + longName(row) + ")'{" + letter + ending + "," + name + "}'";
    } else {
      text += name;
    }
    text += "[" + escaped(row.help, "[]:") + "]";
    const std::string words = wordsFor(row);
    if (!isNone) text += isRequired(row) ? ":" : "::";
    text += isNone                  ? ""
            : isNameOf(row, "FILE") ? "file:_files"
            : isNameOf(row, "DIR")  ? "folder:_files -/"
            : words.empty()         ? "argument: "
                                    : "name:(" + words + ")";
    text += "'";
  });
  return text + " \\\n  '*:file:_files'\n";
}

std::string forFish() {
  std::string text = "# fish completion of sgbk\n";
  forEachOption([&](const sgbk_option& row) {
    text += "complete -c sgbk";
    if (row.letter != 0) text += std::string(" -s ") + row.letter;
    text += std::string(" -l ") + row.name;
    const bool isPath = isNameOf(row, "FILE") || isNameOf(row, "DIR");
    if (isRequired(row)) text += isPath ? " -r -F" : " -x";
    if (const std::string words = wordsFor(row); !words.empty()) text += " -a '" + words + "'";
    text += " -d '" + escaped(row.help, "'\\") + "'\n";
  });
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view shell = argc == 2 ? argv[1] : "";
  std::cout << (shell == "bash" ? forBash() : shell == "zsh" ? forZsh() : forFish());
  return std::cout.flush() ? 0 : 1;
}
