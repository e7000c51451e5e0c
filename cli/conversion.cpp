#include "conversion.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "input.h"

namespace cli {
namespace {

constexpr std::size_t kPiece = 1 << 18;

void check(const Converter& converter, sgbk_result result, const std::string& option = {}) {
  if (result == SGBK_NO_MEMORY) throw std::bad_alloc();
  if (result == SGBK_USAGE) throw UsageError(option + sgbk_error(converter.get()));
}

Converter converterFor(const Options& o) {
  Converter converter = openConverter(o.value("from", "auto"), o.value("to", "gbk"));
  for (const auto& [name, value] : o.given) {
    for (const sgbk_option& row : textOptions()) {
      if (row.name != name) continue;
      const char* const argument = row.argument != nullptr ? value.c_str() : nullptr;
      check(converter, sgbk_set(converter.get(), row.name, argument), "--");
    }
  }
  if (o.has("report")) check(converter, sgbk_set(converter.get(), "losses", nullptr));
  // Which options exclude one another shows with the first input; a trial shows it before any file
  // is touched.
  const char* text;
  std::size_t size;
  check(converter, sgbk_convert(converter.get(), nullptr, 0, 1, &text, &size));
  return converter;
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

Converter openConverter(const std::string& from, const std::string& to) {
  Converter converter(sgbk_open(from.c_str(), to.c_str()), sgbk_close);
  if (converter) return converter;
  if (sgbk_source_name(from.c_str()) == nullptr) {
    throw UsageError("unknown encoding '" + from + "'; sgbk --list shows the names");
  }
  if (sgbk_target_name(to.c_str()) == nullptr) {
    throw UsageError("cannot write '" + to + "'; sgbk --list shows the names");
  }
  throw std::bad_alloc();
}

Conversion::Conversion(const Options& options, std::optional<std::uint64_t> total)
    : options_(options),
      converter_(converterFor(options)),
      finder_(nullptr, sgbk_close),
      buffer_(kPiece),
      report_(options.value("report"), options.number("max-reports", UINT64_MAX)),
      progress_(isProgressShown(options), total) {}

Outcome Conversion::convert(const std::string& path, Output* output, std::uint64_t& lost) try {
  Input input(path);
  const std::string name = nameOfInput(path);
  if (input.isTerminal() && !options_.has("quiet")) {
    printMessage("reading from the terminal; end with Ctrl-D");
  }
  sgbk_reset(converter_.get());
  report_.begin(name);
  sgbk_result result = SGBK_OK;
  for (bool isLast = false; !isLast && result == SGBK_OK;) {
    const std::size_t size = input.read(buffer_.data(), buffer_.size());
    isLast = size == 0;
    const char* text = nullptr;
    std::size_t written = 0;
    result = sgbk_convert(converter_.get(), buffer_.data(), size, isLast, &text, &written);
    if (result != SGBK_OK && result != SGBK_LOST) {
      const char* const advice = result == SGBK_UNKNOWN_SOURCE ? " (-f NAME)" : "";
      throw InputFailure(std::string(sgbk_error(converter_.get())) + advice);
    }
    report_.add(converter_.get());
    if (output != nullptr) output->write({text, written});
    progress_.at(bytesBefore_ + sgbk_count(converter_.get())->bytes);
  }
  bytesBefore_ += sgbk_count(converter_.get())->bytes;
  lost = sgbk_lost(converter_.get());
  account(name, lost);
  return result == SGBK_LOST ? Outcome::stoppedAtLoss : Outcome::converted;
} catch (const InputFailure& failure) {
  tell(Status::failure, nameOfInput(path) + ": " + failure.what());
  return Outcome::unreadable;
}

const char* Conversion::otherEncoding(const std::string& path) {
  // Fewer cannot be told apart.
  constexpr std::ptrdiff_t kEnough = 8;
  if (!finder_) finder_ = openConverter("auto", "utf-8");
  sgbk_reset(finder_.get());
  Input input(path);
  std::ptrdiff_t count = 0;
  for (bool isLast = false; !isLast;) {
    const std::size_t size = input.read(buffer_.data(), buffer_.size());
    isLast = size == 0;
    const char* text = nullptr;
    std::size_t written = 0;
    if (sgbk_convert(finder_.get(), buffer_.data(), size, isLast, &text, &written) != SGBK_OK)
      break;
    // In UTF-8 every character beyond ASCII has one byte from C0 on.
    count += std::count_if(text, text + written,
                           [](char c) { return static_cast<unsigned char>(c) >= 0xC0; });
    const char* const found = sgbk_source(finder_.get());
    if (std::strcmp(found, "auto") == 0) continue;
    if (isSameSource(options_.value("from", "auto"), found)) return nullptr;
    if (count >= kEnough) return found;
  }
  return nullptr;
}

void Conversion::account(const std::string& name, std::uint64_t lost) {
  if (lost != 0 &&
      (options_.has("strict") || options_.has("fail-on-loss") || options_.has("check"))) {
    status_ = std::max(status_, Status::losses);
  }
  if (options_.has("quiet") || (lost == 0 && !options_.has("verbose"))) return;
  progress_.clear();
  const std::string source = sgbk_source(converter_.get());
  printMessage(name + ": " + (options_.has("verbose") ? source + ", " : "") +
               summaryOf(*sgbk_count(converter_.get()), lost));
}

void Conversion::tell(Status status, const std::string& text) {
  progress_.clear();
  printMessage(text);
  status_ = std::max(status_, status);
}

}  // namespace cli
