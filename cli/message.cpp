#include "message.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

const Clock::time_point start = Clock::now();
// The first line comes only after a second: most work is done by then.
Clock::time_point nextProgress = start + std::chrono::seconds(1);
bool isProgressOnScreen = false;
Status worst = Status::done;

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

std::string bytesOf(const sgbk_loss& loss) {
  return inHex({reinterpret_cast<const char*>(loss.bytes), loss.size});
}

void clearProgress() {
  if (isProgressOnScreen) std::fputs("\r\x1B[K", stderr);
  isProgressOnScreen = false;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    // U+0080 to U+009F, which terminals obey, too.
    const bool isControl = byte >= 0x80 && byte < 0xA0 && result.ends_with('\xC2');
    if (isControl) result.replace(result.size() - 1, 1, "\\xC2");
    const bool isHidden = isControl || byte < ' ' || byte == 0x7F;
    result += c == '\t'   ? "\\t"
              : c == '\n' ? "\\n"
              : c == '\\' ? "\\\\"
              : isHidden  ? formatted("\\x%02X", byte)
                          : std::string(1, c);
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

std::string rowOf(const sgbk_loss& loss) {
  return '\t' + std::to_string(loss.line) + '\t' + std::to_string(loss.offset) + '\t' +
         bytesOf(loss) + '\t' + sgbk_reason_name(loss.reason) + '\t' +
         (loss.code_point == 0 ? "" : codePointName(loss.code_point)) + '\n';
}

std::string summaryOf(const sgbk_counts& counts, std::uint64_t lost) {
  std::string text = std::to_string(counts.characters) + " characters, none lost";
  if (lost != 0) {
    text = std::to_string(lost) + " of " + std::to_string(counts.characters) + " characters lost (";
    const char* separator = "";
    for (int reason = 0; reason < SGBK_REASONS; ++reason) {
      if (reason == SGBK_REPLACED || counts.reasons[reason] == 0) continue;
      text += separator + std::to_string(counts.reasons[reason]) + " " + sgbk_reason_name(reason);
      separator = ", ";
    }
    text += ")";
  }
  if (const auto replaced = counts.reasons[SGBK_REPLACED]; replaced != 0) {
    text += ", " + std::to_string(replaced) + " replaced by ASCII";
  }
  if (lost == 0) return text;
  text += "; first: line " + std::to_string(counts.first.line) + ", byte " +
          std::to_string(counts.first.offset) + ": " + bytesOf(counts.first);
  const std::uint32_t c = counts.first.code_point;
  return c == 0 ? text : text + " (" + codePointName(c) + ")";
}

void printMessage(std::string_view text) {
  clearProgress();
  std::fprintf(stderr, "sgbk: %s\n", escaped(text).c_str());
}

void tell(Status status, std::string_view text) {
  if (!text.empty()) printMessage(text);
  worst = std::max(worst, status);
}

void showProgress(double done, double total) {
  const auto now = Clock::now();
  if (now < nextProgress) return;
  nextProgress = now + std::chrono::milliseconds(250);
  const double rate = done / std::chrono::duration<double>(now - start).count();
  std::string line = inUnits(done);
  if (std::isfinite(total) && total > 0) {
    const auto left = static_cast<unsigned>(std::max(0.0, total - done) / rate);
    line += formatted(" of %s, %.0f %%, %u:%02u left", inUnits(total).c_str(),
                      100 * std::min(done / total, 1.0), left / 60, left % 60);
  }
  std::fprintf(stderr, "\r%s, %s/s\x1B[K", line.c_str(), inUnits(rate).c_str());
  std::fflush(stderr);
  isProgressOnScreen = true;
}

Status endMessages() {
  clearProgress();
  return worst;
}

}  // namespace cli
