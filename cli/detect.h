// Finds the encoding of an input where that can be known.

#ifndef SGBK_CLI_DETECT_H
#define SGBK_CLI_DETECT_H

#include <optional>
#include <string>
#include <string_view>

#include "encodings.h"
#include "sgbk/EncodingConvertor.h"

namespace cli {

// A byte-order mark, the escapes of HZ and nothing that HZ does not have, or valid UTF-8, in this
// order; nothing when it is none of them.
// isWhole  the input ends with `start`
std::optional<Source> detect(EncodingConvertor& converter, std::string_view start, bool isWhole);

// The byte order of UCS-2: by its mark, little-endian without one.
Source ucs2Order(std::string_view start);

// What to tell somebody whose input is none of these.
std::string adviceFor(EncodingConvertor& converter, std::string_view start, bool isWhole);

}  // namespace cli

#endif
