// What the command says on standard error, and how it ends.

#ifndef SGBK_CLI_MESSAGE_H
#define SGBK_CLI_MESSAGE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace cli {

// The exit statuses of the command.
enum class Status { done = 0, losses = 1, usage = 2, failure = 3 };

// Control characters and backslashes as \n, \x1B or \\: a name can neither break the lines that it
// stands in nor speak to the terminal.
std::string escaped(std::string_view text);

// "F0 9F", with `between` between the bytes.
std::string inHex(std::string_view bytes, const char* between = " ");

// "U+1F600"
std::string codePointName(std::uint32_t c);

// A line on standard error, escaped.
void printMessage(std::string_view text);

}  // namespace cli

#endif
