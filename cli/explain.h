// What becomes of a character, and why.

#ifndef SGBK_CLI_EXPLAIN_H
#define SGBK_CLI_EXPLAIN_H

#include <string>

namespace cli {

// text  in the encoding of the locale; so is the result
// Throws UsageError when it is not valid.
std::string explain(const std::string& text);

}  // namespace cli

#endif
