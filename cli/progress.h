// How far the work has come, on the terminal.

#ifndef SGBK_CLI_PROGRESS_H
#define SGBK_CLI_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <optional>

namespace cli {

class Progress {
 public:
  // total  bytes to come in all, where that is known
  Progress(bool isShown, std::optional<std::uint64_t> total) : isShown_(isShown), total_(total) {}
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Says that so many bytes have been converted in all; shows it now and then.
  void at(std::uint64_t bytes);
  // Frees the line for a message.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  const bool isShown_;
  const std::optional<std::uint64_t> total_;
  const Clock::time_point start_ = Clock::now();
  // The first line comes only after a second: most work is done by then.
  Clock::time_point next_ = start_ + std::chrono::seconds(1);
  bool isOnScreen_ = false;
};

}  // namespace cli

#endif
