// The encodings the command knows, by all their names.

#ifndef SGBK_CLI_ENCODINGS_H
#define SGBK_CLI_ENCODINGS_H

#include <optional>
#include <string>
#include <string_view>

namespace cli {

// `automatic` stands for an encoding still to be found, `ucs2` for one whose byte order is.
enum class Source { automatic, big5, gbk, utf8, ucs2le, ucs2be, ucs2, hz };
enum class Target { gbk, gbkWide, big5, utf8 };

// Case, and everything but letters and digits, is ignored: "Big-5" is "BIG5".
std::optional<Source> sourceNamed(std::string_view name);
std::optional<Target> targetNamed(std::string_view name);

// The name that --list gives first.
std::string_view nameOf(Source source);

// Separated by blanks.
std::string sourceNames();
std::string targetNames();

// What --list prints.
std::string encodingList();

}  // namespace cli

#endif
