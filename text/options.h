// What can be asked of a converter: the encodings, by all their names, and the options. One table
// each for the C interface, the command and Python.

#ifndef SGBK_TEXT_OPTIONS_H
#define SGBK_TEXT_OPTIONS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "sgbk/text.h"

namespace sgbk::text {

// `automatic` stands for an encoding still to be found, `ucs2` for one whose byte order is.
enum class Source : std::uint8_t { automatic, big5, gbk, utf8, ucs2le, ucs2be, ucs2, hz };
enum class Target : std::uint8_t { gbk, gb18030, gbkWide, big5, utf8, utf16le };

// Case, everything but letters and digits, and what follows "//" are ignored: "Big-5//IGNORE" is
// "BIG5".
std::optional<Source> sourceNamed(std::string_view name);
std::optional<Target> targetNamed(std::string_view name);

const char* nameOf(Source source);
const char* nameOf(Target target);

// In the order of the enumerations.
std::span<const sgbk_encoding> sources();
std::span<const sgbk_encoding> targets();

// What a table is indexed by: a two-byte code, lead byte + 256 * trail byte, or a code point. A
// single byte is ASCII in all of them.
enum class Codes : std::uint8_t { big5, gbk, unicode };

// All that the table of a conversion depends on.
struct TableKey {
  Codes codes = Codes::gbk;
  Target target = Target::gbk;
  // Written is not the target yet, but GBK text in which what GBK lacks has four bytes.
  bool isMiddle = false;
  bool simplify = true;
  bool halfWidth = false;
  bool foldCase = false;
  bool html = false;  // full-width & < > are written as references, in the target only
  bool traditional = false;

  bool operator==(const TableKey&) const = default;
};

struct Options : TableKey {
  bool entities = false;
  bool trim = false;
  bool declare = false;
  bool strict = false;
  bool losses = false;
  std::optional<std::size_t> truncate;
  std::optional<std::string> replace;
};

// Ends a call with a result that is not SGBK_OK.
struct Failure {
  sgbk_result result;
  std::string sentence;
};

// All but "losses", which is for programs.
std::span<const sgbk_option> optionTable();

// Throws Failure.
void setOption(Options& options, const std::string& name, const char* value);
// Throws Failure when they exclude one another.
void checkTogether(const Options& options, Source source);

}  // namespace sgbk::text

#endif
