#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>
#include <set>
#include <sgbk/text.hpp>
#include <sstream>
#include <utility>
#include <vector>

#include "files.h"
#include "message.h"
#include "options.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

// The names in a list, each ended by a NUL character or, where there is none, by a line feed.
std::vector<std::string> namesIn(const std::string& list) {
  Input input(list);
  std::string text;
  char piece[4096];
  while (const std::size_t size = input.read(piece, sizeof piece)) text.append(piece, size);
  const char end = text.find('\0') != text.npos ? '\0' : '\n';
  std::vector<std::string> names;
  std::istringstream lines(text);
  for (std::string name; std::getline(lines, name, end);) {
    // A name in a list is always that of a file.
    if (!name.empty()) names.push_back(name == "-" ? "./-" : name);
  }
  return names;
}

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

// One input after the other through the converter, with a summary of each.
class Conversion {
 public:
  // Throws UsageError for what the library does not know.
  // total  bytes of all inputs; infinite where that is not known
  Conversion(const Options& options, double total) : options_(options), total_(total) {}

  // Converts the input at `path` and says what was lost. False when a loss was not permitted.
  // output, report  null to write nothing
  bool convert(const std::string& path, Output* output, Output* report) {
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
    summarize(input.name());
    return result == SGBK_OK;
  }

  // What the report still has to get.
  const std::string& rows() const { return rows_; }
  // Characters of the last input.
  std::uint64_t lost() const { return sgbk_lost(converter_.get()); }

  // The encoding in which "auto" finds the file at `path`, when that is not the one given by -f and
  // the file has enough characters beyond ASCII to tell; otherwise null.
  const char* otherEncoding(const std::string& path) try {
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

 private:
  void summarize(const std::string& name) const {
    if (lost() != 0 &&
        (options_.has("strict") || options_.has("fail-on-loss") || options_.has("check"))) {
      tell(Status::losses, "");
    }
    if (options_.has("quiet") || (lost() == 0 && !options_.has("verbose"))) return;
    const std::string source = sgbk_source(converter_.get());
    printMessage(name + ": " + (options_.has("verbose") ? source + ", " : "") +
                 summaryOf(*sgbk_count(converter_.get()), lost()));
  }

  const Options& options_;
  sgbk::Converter converter_ = converterFor(options_);
  // In the report of an input.
  const std::uint64_t mostRows_ = options_.number("max-reports", UINT64_MAX);
  const bool isProgressShown_ = isProgressShown(options_);
  const double total_;
  double done_ = 0;
  std::string rows_ = kReportHead;
  std::vector<char> buffer_ = std::vector<char>(1 << 17);
};

class Run {
 public:
  explicit Run(const Options& options) : options_(options), conversion_(options, noteInputs()) {
    if (!options_.has("report")) return;
    report_ = std::make_unique<Output>(options_.value("report"));
    refuseInputAs(*report_);
    if (!report_->isDirect()) take(report_->name());
    if (options_.has("output") && !take(options_.value("output"))) {
      throw UsageError("--report and -o name the same file");
    }
  }

  void convertAll() {
    try {
      convertInputs();
    } catch (const FileFailure& failure) {
      tell(Status::failure, failure.what());
    }
    putAllInPlace();
    if (!report_ || report_->hasFailed()) return;
    report_->write(conversion_.rows());
    report_->putInPlace();
  }

 private:
  // Which files the inputs are, and how many bytes in all; infinite where that is not known.
  double noteInputs() {
    double total = 0;
    for (const std::string& path : options_.files) {
      struct stat file;
      const bool isStandard = path == "-";
      if ((isStandard ? fstat(0, &file) : stat(path.c_str(), &file)) != 0) continue;
      if (S_ISREG(file.st_mode)) {
        inputs_.emplace(file.st_dev, file.st_ino);
        const off_t at = isStandard ? lseek(0, 0, SEEK_CUR) : 0;
        total += static_cast<double>(std::max<off_t>(file.st_size - at, 0));
      } else if (!S_ISDIR(file.st_mode)) {
        total = INFINITY;
      }
    }
    return total;
  }

  void convertInputs() {
    std::unique_ptr<Output> output;  // of all inputs
    if (!options_.isEach() && !options_.has("check")) {
      output = std::make_unique<Output>(options_.value("output", "-"));
      refuseInputAs(*output);
      refuseReportAs(*output);
    }
    bool isComplete = true;
    for (const std::string& path : options_.files) {
      try {
        if (options_.isEach() ? convertAlone(path)
                              : conversion_.convert(path, output.get(), report_.get())) {
          continue;
        }
        isComplete = false;
        break;
      } catch (const FileFailure& failure) {
        // What only cannot be read, or has an output of its own, keeps no other file from it.
        if ((output && output->hasFailed()) || (report_ && report_->hasFailed())) throw;
        tell(Status::failure, failure.what());
        isComplete = false;
      }
    }
    if (!output) return;
    if (isComplete || output->isDirect()) {
      output->putInPlace();
    } else {
      printMessage(output->name() + ": not put in place");
    }
  }

  // Converts a file to an output of its own. False when a loss was not permitted.
  bool convertAlone(const std::string& path) {
    const auto refuse = [&](const std::string& why) { throw FileFailure(path + ": " + why); };
    const std::string target = isInPlace_ ? path : targetInFolder(path);
    if (target.empty()) refuse("--output-dir takes neither absolute paths nor '..'");
    struct stat file;
    if (stat(path.c_str(), &file) != 0) refuse(std::strerror(errno));
    if (isInPlace_ && !S_ISREG(file.st_mode)) refuse("not a regular file");
    // What has been converted is not in the encoding of the input any more.
    if (!take(target)) {
      refuse(isInPlace_ ? "is replaced or kept already" : "another output has its name");
    }
    const std::string backup = suffix_.empty() ? "" : path + suffix_;
    std::error_code error;
    if (!backup.empty() &&
        (fs::symlink_status(backup, error).type() != fs::file_type::not_found || !take(backup))) {
      refuse(backup + " exists already");
    }
    if (isInPlace_ && !options_.has("force")) {
      if (const char* const other = conversion_.otherEncoding(path)) {
        tell(Status::losses, path + ": left as it was: it looks like " + other + ", not " +
                                 options_.value("from") + "; --force converts it all the same");
        return true;
      }
    }
    if (!isInPlace_) {
      const fs::path folder = fs::path(target).parent_path();
      if (!folder.empty()) fs::create_directories(folder, error);
      if (error) throw FileFailure(folder.string() + ": " + error.message());
    }
    auto output = std::make_unique<Output>(target);
    if (isInPlace_ && output->isDirect()) refuse("is being written");
    if (!isInPlace_) refuseInputAs(*output);
    if (!conversion_.convert(path, output.get(), report_.get())) return false;
    if (conversion_.lost() != 0 && options_.has("fail-on-loss")) {
      printMessage(target + (output->old() ? ": left as it was" : ": not written"));
    } else {
      place(std::move(output), backup);
    }
    return true;
  }

  // What replaces a file has to be on the disk before: a few are brought there one by one,
  // thousands of small ones together, as that takes no longer than one.
  void place(std::unique_ptr<Output> output, const std::string& backup) {
    constexpr int kOneByOne = 3;
    constexpr off_t kSmall = 1 << 20;
    constexpr std::size_t kMost = 256;
    if (output->isDirect() || !output->old()) return output->putInPlace();
    struct stat file;
    if (fstat(output->fd(), &file) != 0) output->fail("write error");
    if (file.st_size > kSmall || placedAlone_ < kOneByOne) {
      ++placedAlone_;
      return output->putInPlace(backup);
    }
    if (file.st_dev != device_ || waiting_.size() == kMost) putAllInPlace();
    device_ = file.st_dev;
    // The first one stays open, for the call that brings all to the disk.
    if (!waiting_.empty()) output->finish(false);
    waiting_.emplace_back(std::move(output), backup);
  }

  void putAllInPlace() {
    int error = 0;
    if (waiting_.size() > 1 && TEMP_FAILURE_RETRY(syncfs(waiting_[0].first->fd())) != 0) {
      error = errno;
    }
    for (const auto& [output, backup] : waiting_) {
      try {
        if (error != 0) output->fail("write error", error);
        output->putInPlace(backup);
      } catch (const FileFailure& failure) {
        tell(Status::failure, failure.what());
      }
    }
    waiting_.clear();
  }

  // Empty for a path that leads out of the folder.
  std::string targetInFolder(const std::string& path) const {
    const fs::path below = path;
    if (below.is_absolute() || std::ranges::count(below, fs::path("..")) != 0) return {};
    return (fs::path(options_.value("output-dir")) / below).lexically_normal();
  }

  // Whether the path leads to what is not taken yet; it is now.
  bool take(const std::string& path) { return taken_.insert(placeOf(path)).second; }

  // An output that is an input would be destroyed, or be read for ever.
  void refuseInputAs(const Output& output) const {
    const auto& old = output.old();
    if (old && inputs_.contains({old->st_dev, old->st_ino})) {
      throw FileFailure(output.name() +
                        ": is an input too, which would be destroyed; use -i to replace it");
    }
  }

  // The lines of the report would run into the text, under whatever names they meet. A device,
  // such as a terminal, takes both.
  void refuseReportAs(const Output& output) const {
    if (!report_ || !report_->old() || !output.old()) return;
    const struct stat& one = *report_->old();
    const struct stat& other = *output.old();
    if (one.st_dev == other.st_dev && one.st_ino == other.st_ino && !S_ISCHR(one.st_mode)) {
      throw UsageError("--report and the text would go to the same file: " + report_->name());
    }
  }

  const Options& options_;
  const bool isInPlace_ = options_.has("in-place");
  const std::string suffix_ = options_.value("in-place");
  std::set<std::pair<dev_t, ino_t>> inputs_;
  std::set<std::string> taken_;  // places that are written or kept
  Conversion conversion_;
  std::unique_ptr<Output> report_;

  // Outputs that wait to be put in place, all on one device, with their backups.
  std::vector<std::pair<std::unique_ptr<Output>, std::string>> waiting_;
  dev_t device_ = 0;
  int placedAlone_ = 0;
};

}  // namespace

void convertFiles(Options options) {
  if (options.has("files-from")) {
    const auto names = namesIn(options.value("files-from"));
    options.files.insert(options.files.end(), names.begin(), names.end());
  }
  Run(options).convertAll();
}

}  // namespace cli
