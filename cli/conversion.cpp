#include "conversion.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "input.h"

namespace cli {
namespace {

constexpr std::size_t kPiece = 1 << 18;

const char* sourceGiven(const Options& o) { return o.from.empty() ? "auto" : o.from.c_str(); }

void check(const Converter& converter, sgbk_result result) {
  if (result == SGBK_NO_MEMORY) throw std::bad_alloc();
  if (result == SGBK_USAGE) throw UsageError(sgbk_error(converter.get()));
}

Converter converterFor(const Options& o) {
  Converter converter = openConverter(sourceGiven(o), o.to);
  for (const auto& [name, value] : o.text) {
    const sgbk_result result =
        sgbk_set(converter.get(), name.c_str(), value ? value->c_str() : nullptr);
    if (result == SGBK_USAGE) throw UsageError(std::string("--") + sgbk_error(converter.get()));
    check(converter, result);
  }
  if (!o.report.empty()) check(converter, sgbk_set(converter.get(), "losses", nullptr));
  // Which options exclude one another shows with the first input; a trial shows it before any file
  // is touched.
  const char* text;
  std::size_t size;
  check(converter, sgbk_convert(converter.get(), nullptr, 0, 1, &text, &size));
  return converter;
}

bool isProgressShown(const Options& o) {
  if (o.progress != When::automatic) return o.progress == When::always;
  // The lines of the output would run into it.
  const bool isToStandardOutput = o.output.empty() || o.output == "-";
  const bool isOutputShown =
      !o.check && !o.inPlace && o.outputFolder.empty() && isToStandardOutput && isatty(1) == 1;
  return isatty(2) == 1 && !isOutputShown;
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
      report_(options.report, options.maxReports),
      progress_(isProgressShown(options), total) {}

Outcome Conversion::convert(const std::string& path, Output* output, std::uint64_t& lost) try {
  Input input(path);
  const std::string name = nameOfInput(path);
  if (input.isTerminal() && !options_.quiet) {
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
    if (isSameSource(sourceGiven(options_), found)) return nullptr;
    if (count >= kEnough) return found;
  }
  return nullptr;
}

void Conversion::account(const std::string& name, std::uint64_t lost) {
  const auto isSet = [this](const char* option) {
    return std::ranges::any_of(options_.text, [&](const auto& set) { return set.first == option; });
  };
  if (lost != 0 && (options_.failOnLoss || options_.check || isSet("strict"))) {
    status_ = std::max(status_, Status::losses);
  }
  if (options_.quiet || (lost == 0 && !options_.verbose)) return;
  progress_.clear();
  const std::string source = sgbk_source(converter_.get());
  printMessage(name + ": " + (options_.verbose ? source + ", " : "") +
               summaryOf(*sgbk_count(converter_.get()), lost));
}

void Conversion::tell(Status status, const std::string& text) {
  progress_.clear();
  printMessage(text);
  status_ = std::max(status_, status);
}

}  // namespace cli
