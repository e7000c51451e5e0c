// Writes the completion of a shell from the option table; run by the build.

#include <sgbk/text.h>

#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>

#include "options.h"

namespace {

using cli::Completion;
using cli::OptionRow;

std::string namesOf(const sgbk_encoding* (*all)(std::size_t*)) {
  std::size_t count = 0;
  std::string names;
  for (const sgbk_encoding* row = all(&count); count != 0; ++row, --count) {
    names.append(names.empty() ? "" : " ").append(row->name);
  }
  return names;
}

// The words that an argument may be, empty for a free one.
std::string wordsFor(const OptionRow& row) {
  switch (row.completion) {
    case Completion::source: return namesOf(sgbk_sources);
    case Completion::target: return namesOf(sgbk_targets);
    case Completion::when: return "auto always never";
    default: return {};
  }
}

bool needsArgument(const OptionRow& row) {
  return row.argument != nullptr && !cli::hasOptionalArgument(row);
}

bool namesFile(const OptionRow& row) {
  return row.completion == Completion::file || row.completion == Completion::folder;
}

// "-f|--from"
std::string bothNames(const OptionRow& row) {
  const std::string name = std::string("--") + row.name;
  return row.letter != 0 ? std::string("-") + row.letter + "|" + name : name;
}

std::string forBash() {
  std::string text =
      "# bash completion of sgbk\n"
      "_sgbk() {\n"
      "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
      "  if [ \"$cur\" = = ]; then cur=\n"
      "  elif [ \"$prev\" = = ]; then prev=${COMP_WORDS[COMP_CWORD-2]}\n"
      "  fi\n"
      "  COMPREPLY=()\n"
      "  case $prev in\n";
  std::string options;
  for (const OptionRow& row : cli::optionTable()) {
    options += std::string(options.empty() ? "" : " ") + "--" + row.name;
    if (!needsArgument(row)) continue;
    const std::string words = wordsFor(row);
    text += "    " + bothNames(row) + ") ";
    if (!words.empty()) text += "COMPREPLY=($(compgen -W \"" + words + "\" -- \"$cur\")); ";
    text += "return ;;\n";
  }
  text +=
      "  esac\n"
      "  case $cur in\n"
      "    -*) COMPREPLY=($(compgen -W \"" +
      options +
      "\" -- \"$cur\")) ;;\n"
      "  esac\n"
      "}\n"
      "complete -o default -F _sgbk sgbk\n";
  return text;
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
  for (const OptionRow& row : cli::optionTable()) {
    const std::string name = std::string("--") + row.name;
    const std::string letter = row.letter != 0 ? std::string("-") + row.letter : "";
    const char* const end = needsArgument(row) ? "=" : row.argument != nullptr ? "=-" : "";
    const char* const letterEnd = needsArgument(row) ? "+" : row.argument != nullptr ? "-" : "";
    text += " \\\n  ";
    if (row.letter != 0) {
      text += "'(" + letter + " " + name + ")'{" + letter + letterEnd + "," + name + end + "}'";
    } else {
      text += "'" + name + end;
    }
    text += "[" + escaped(row.help, "[]:") + "]";
    if (row.argument != nullptr) {
      const std::string words = wordsFor(row);
      text += needsArgument(row) ? ":" : "::";
      text += row.completion == Completion::file     ? "file:_files"
              : row.completion == Completion::folder ? "folder:_files -/"
              : words.empty()                        ? "argument: "
                                                     : "name:(" + words + ")";
    }
    text += "'";
  }
  return text + " \\\n  '*:file:_files'\n";
}

std::string forFish() {
  std::string text = "# fish completion of sgbk\n";
  for (const OptionRow& row : cli::optionTable()) {
    text += "complete -c sgbk";
    if (row.letter != 0) text += std::string(" -s ") + row.letter;
    text += std::string(" -l ") + row.name;
    if (needsArgument(row)) text += namesFile(row) ? " -r -F" : " -x";
    if (const std::string words = wordsFor(row); !words.empty()) text += " -a '" + words + "'";
    text += " -d '" + escaped(row.help, "'\\") + "'\n";
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view shell = argc == 2 ? argv[1] : "";
  if (shell == "bash") {
    std::cout << forBash();
  } else if (shell == "zsh") {
    std::cout << forZsh();
  } else if (shell == "fish") {
    std::cout << forFish();
  } else {
    std::fputs("usage: sgbk-make-completions bash|zsh|fish\n", stderr);
    return 2;
  }
  return std::cout.flush() ? 0 : 1;
}
