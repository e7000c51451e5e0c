// The encodings, by all their names.

#ifndef SGBK_TEXT_ENCODINGS_H
#define SGBK_TEXT_ENCODINGS_H

#include <cstdint>
#include <optional>
#include <span>
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

}  // namespace sgbk::text

#endif
