#include "message.h"

#include <algorithm>
#include <cstdio>

namespace cli {
namespace {

template <class... Values>
std::string formatted(const char* format, Values... values) {
  char text[128];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

// "1.4 GiB"
std::string inUnits(double bytes) {
  constexpr const char* kUnits[] = {"B", "KiB", "MiB", "GiB", "TiB"};
  int unit = 0;
  for (; bytes >= 1024 && unit < 4; ++unit) bytes /= 1024;
  return formatted(unit == 0 ? "%.0f %s" : "%.1f %s", bytes, kUnits[unit]);
}

Status worst = Status::done;
bool isProgressOnScreen = false;

void clearProgress() {
  if (isProgressOnScreen) std::fputs("\r\x1B[K", stderr);
  isProgressOnScreen = false;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto before = static_cast<unsigned char>(i == 0 ? 0 : text[i - 1]);
    if (byte == '\t') {
      result += "\\t";
    } else if (byte == '\n') {
      result += "\\n";
    } else if (byte == '\\') {
      result += "\\\\";
    } else if (before == 0xC2 && byte >= 0x80 && byte < 0xA0) {
      // U+0080 to U+009F, which terminals obey, too.
      result.back() = '\\';
      result += "xC2" + formatted("\\x%02X", byte);
    } else if (byte < ' ' || byte == 0x7F) {
      result += formatted("\\x%02X", byte);
    } else {
      result += text[i];
    }
  }
  return result;
}

std::string inHex(std::string_view bytes, const char* between) {
  std::string hex;
  for (const char c : bytes) {
    hex += (hex.empty() ? "" : between) + formatted("%02X", static_cast<unsigned char>(c));
  }
  return hex;
}

std::string codePointName(std::uint32_t c) { return formatted("U+%04X", c); }

void printMessage(std::string_view text) {
  clearProgress();
  std::fprintf(stderr, "sgbk: %s\n", escaped(text).c_str());
}

void tell(Status status, std::string_view text) {
  if (!text.empty()) printMessage(text);
  worst = std::max(worst, status);
}

Status worstStatus() { return worst; }

Progress::~Progress() { clearProgress(); }

void Progress::add(std::uint64_t bytes) {
  bytes_ += bytes;
  const auto now = Clock::now();
  if (!isShown_ || now < next_) return;
  next_ = now + std::chrono::milliseconds(250);
  const auto done = static_cast<double>(bytes_);
  const double rate = done / std::chrono::duration<double>(now - start_).count();
  std::string line = inUnits(done);
  if (total_ && *total_ != 0) {
    const auto total = static_cast<double>(*total_);
    const auto left = static_cast<unsigned>(std::max(0.0, total - done) / rate);
    line += formatted(" of %s, %.0f %%, %u:%02u left", inUnits(total).c_str(),
                      100 * std::min(done / total, 1.0), left / 60, left % 60);
  }
  std::fprintf(stderr, "\r%s, %s/s\x1B[K", line.c_str(), inUnits(rate).c_str());
  std::fflush(stderr);
  isProgressOnScreen = true;
}

}  // namespace cli
