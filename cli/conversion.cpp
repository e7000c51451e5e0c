#include "conversion.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "message.h"

namespace cli {
namespace {

sgbk::Converter converterFor(const Options& o) try {
  sgbk::Converter converter(o.value("from", "auto"), o.value("to", "gbk"));
  for (const auto& [name, value] : o.given) {
    for (const sgbk_option& row : textOptions()) {
      if (row.name == name) converter.set(name, row.argument != nullptr ? value.c_str() : nullptr);
    }
  }
  if (o.has("report")) converter.set("losses");
  // Which options exclude one another shows with the first input; a trial shows it before any file
  // is touched.
  converter.convert(nullptr, 0, true);
  return converter;
} catch (const sgbk::Error& error) {
  throw UsageError(error.what());
}

bool isProgressShown(const Options& o) {
  const std::string when = o.value("progress", "auto");
  // The lines of the output would run into it.
  return when == "always" ||
         (when == "auto" && isatty(2) == 1 && !(o.isToStandardOutput() && isatty(1) == 1));
}

bool isSameSource(const std::string& given, const std::string& found) {
  const std::string name = sgbk_source_name(given.c_str());
  return found == name || name == "auto" || (name == "ucs-2" && found.starts_with(name));
}

}  // namespace

Conversion::Conversion(const Options& options, double total)
    : options_(options),
      converter_(converterFor(options)),
      mostRows_(options.number("max-reports", UINT64_MAX)),
      isProgressShown_(isProgressShown(options)),
      total_(total),
      buffer_(1 << 17) {}

bool Conversion::convert(const std::string& path, Output* output, Output* report) {
  Input input(path);
  if (isatty(input.fd()) == 1 && !options_.has("quiet")) {
    printMessage("reading from the terminal; end with Ctrl-D");
  }
  sgbk_reset(converter_.get());
  const std::string name = escaped(input.name());
  constexpr std::size_t kBuffered = 1 << 16;
  std::uint64_t rowsLeft = mostRows_;
  sgbk_result result = SGBK_OK;
  for (bool isLast = false; !isLast && result == SGBK_OK;) {
    const std::size_t size = input.read(buffer_.data(), buffer_.size());
    isLast = size == 0;
    const char* text = nullptr;
    std::size_t written = 0;
    result = sgbk_convert(converter_.get(), buffer_.data(), size, isLast, &text, &written);
    if (result != SGBK_OK && result != SGBK_LOST) {
      const char* const advice = result == SGBK_UNKNOWN_SOURCE ? " (-f NAME)" : "";
      input.fail(std::string(sgbk_error(converter_.get())) + advice);
    }
    if (report != nullptr) {
      std::size_t count = 0;
      const sgbk_loss* loss = sgbk_losses(converter_.get(), &count);
      for (; count != 0 && rowsLeft != 0; --count, --rowsLeft) rows_ += name + rowOf(*loss++);
      if (rows_.size() > kBuffered) report->write(std::exchange(rows_, {}));
    }
    if (output != nullptr) output->write({text, written});
    done_ += static_cast<double>(size);
    if (isProgressShown_) showProgress(done_, total_);
  }
  account(input.name());
  return result == SGBK_OK;
}

const char* Conversion::otherEncoding(const std::string& path) try {
  // Fewer cannot be told apart.
  constexpr std::ptrdiff_t kEnough = 8;
  const std::string given = options_.value("from");
  sgbk::Converter finder("auto", "utf-8");
  Input input(path);
  std::ptrdiff_t count = 0;
  for (std::size_t size = 1; size != 0;) {
    size = input.read(buffer_.data(), buffer_.size());
    const std::string text = finder.convert(buffer_.data(), size, size == 0);
    // In UTF-8 every character beyond ASCII has one byte from C0 on.
    count +=
        std::ranges::count_if(text, [](char c) { return static_cast<unsigned char>(c) >= 0xC0; });
    const char* const found = sgbk_source(finder.get());
    if (std::strcmp(found, "auto") == 0) continue;
    if (isSameSource(given, found)) return nullptr;
    if (count >= kEnough) return found;
  }
  return nullptr;
} catch (const sgbk::Error&) {
  return nullptr;
}

void Conversion::account(const std::string& name) const {
  if (lost() != 0 &&
      (options_.has("strict") || options_.has("fail-on-loss") || options_.has("check"))) {
    tell(Status::losses, "");
  }
  if (options_.has("quiet") || (lost() == 0 && !options_.has("verbose"))) return;
  const std::string source = sgbk_source(converter_.get());
  printMessage(name + ": " + (options_.has("verbose") ? source + ", " : "") +
               summaryOf(*sgbk_count(converter_.get()), lost()));
}

}  // namespace cli
