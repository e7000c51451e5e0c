#include "progress.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace cli {
namespace {

// "1.4 GiB"
std::string inUnits(double bytes) {
  constexpr const char* kUnits[] = {"B", "KiB", "MiB", "GiB", "TiB"};
  int unit = 0;
  for (; bytes >= 1024 && unit < 4; ++unit) bytes /= 1024;
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, kUnits[unit]);
  return text;
}

}  // namespace

void Progress::at(std::uint64_t bytes) {
  if (!isShown_) return;
  const auto now = Clock::now();
  if (now < next_) return;
  next_ = now + std::chrono::milliseconds(250);
  const double seconds = std::chrono::duration<double>(now - start_).count();
  const double rate = static_cast<double>(bytes) / seconds;
  std::string line = inUnits(static_cast<double>(bytes));
  if (total_ && *total_ != 0) {
    const double done = static_cast<double>(bytes) / static_cast<double>(*total_);
    const double left = std::max(0.0, static_cast<double>(*total_) - static_cast<double>(bytes));
    const auto wait = static_cast<unsigned>(left / rate);
    char text[64];
    std::snprintf(text, sizeof text, " of %s, %.0f %%, %u:%02u left",
                  inUnits(static_cast<double>(*total_)).c_str(), 100 * std::min(done, 1.0),
                  wait / 60, wait % 60);
    line += text;
  }
  line += ", " + inUnits(rate) + "/s";
  std::fprintf(stderr, "\r%s\x1B[K", line.c_str());
  std::fflush(stderr);
  isOnScreen_ = true;
}

void Progress::clear() {
  if (isOnScreen_) std::fputs("\r\x1B[K", stderr);
  isOnScreen_ = false;
}

}  // namespace cli
