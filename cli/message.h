// What the command says, and how it ends.

#ifndef SGBK_CLI_MESSAGE_H
#define SGBK_CLI_MESSAGE_H

#include <sgbk/text.h>

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

// A row of --report, without the name of the file; the first line is kReportHead.
constexpr char kReportHead[] = "file\tline\tbyte\tbytes\treason\tcode point\n";
std::string rowOf(const sgbk_loss& loss);

// "2 of 7 characters lost (1 malformed, 1 undefined); first: line 2, byte 4: 81 41"
std::string summaryOf(const sgbk_counts& counts, std::uint64_t lost);

// A line on standard error, escaped.
void printMessage(std::string_view text);

// The same, if it is not empty; the command will end with this status, or a worse one.
void tell(Status status, std::string_view text);

// Now and then, in a line that messages take the place of, how many bytes have been read.
// total  bytes to come in all; infinite where that is not known
void showProgress(double done, double total);

// Says no more; returns the worst status.
Status endMessages();

}  // namespace cli

#endif
