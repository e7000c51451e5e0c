// What can be asked of a converter: one table for the C interface, the command and Python.

#ifndef SGBK_TEXT_OPTIONS_H
#define SGBK_TEXT_OPTIONS_H

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "encodings.h"

namespace sgbk::text {

// Ends a call with a result that is not SGBK_OK.
struct Failure {
  sgbk_result result;
  std::string sentence;
};

struct Options {
  bool entities = false;
  bool simplify = true;
  bool halfWidth = false;
  bool foldCase = false;
  bool trim = false;
  bool html = false;
  bool declare = false;
  bool traditional = false;
  bool strict = false;
  bool losses = false;
  std::optional<std::size_t> truncate;
  std::optional<std::string> replace;
};

// All but "losses", which is for programs.
std::span<const sgbk_option> optionTable();

// Throws Failure.
void setOption(Options& options, const std::string& name, const char* value);
// Throws Failure when they exclude one another.
void checkTogether(const Options& options, Source source, Target target);

}  // namespace sgbk::text

#endif
