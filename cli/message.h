// What the command says on standard error, and how it ends.

#ifndef SGBK_CLI_MESSAGE_H
#define SGBK_CLI_MESSAGE_H

#include <chrono>
#include <cstdint>
#include <optional>
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

// The same, if it is not empty; the command will end with this status, or a worse one.
void tell(Status status, std::string_view text);
Status worstStatus();

// How far the work has come, in a line that messages take the place of.
class Progress {
 public:
  // total  bytes to come in all, where that is known
  Progress(bool isShown, std::optional<std::uint64_t> total) : isShown_(isShown), total_(total) {}
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Says that so many bytes more have been read; shows it now and then.
  void add(std::uint64_t bytes);

 private:
  using Clock = std::chrono::steady_clock;

  const bool isShown_;
  const std::optional<std::uint64_t> total_;
  std::uint64_t bytes_ = 0;
  const Clock::time_point start_ = Clock::now();
  // The first line comes only after a second: most work is done by then.
  Clock::time_point next_ = start_ + std::chrono::seconds(1);
};

}  // namespace cli

#endif
