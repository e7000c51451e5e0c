#include "run.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>

#include "conversion.h"
#include "input.h"

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
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = std::min(text.find(end, at), text.size()) - at;
    const std::string name = text.substr(at, length);
    // A name in a list is always that of a file.
    if (!name.empty()) names.push_back(name == "-" ? "./-" : name);
    at += length + 1;
  }
  return names;
}

class Run {
 public:
  explicit Run(const Options& options)
      : options_(options),
        total_(takeNotes()),
        conversion_(options, total_),
        placement_([this](const OutputFailure& failure) { tell(failure); }) {
    if (const Output* const report = conversion_.report().output()) {
      refuseInputAs(*report);
      if (!report->isDirect()) taken_.insert(placeOf(report->name()));
    }
    if (options_.has("output") && taken_.contains(placeOf(options_.value("output")))) {
      throw UsageError("--report and -o name the same file");
    }
  }

  Status convertAll() {
    try {
      options_.isEach() ? convertEach() : convertToOne();
    } catch (const OutputFailure& failure) {
      tell(failure);
    }
    placement_.flush();
    try {
      conversion_.report().finish(placement_);
      placement_.flush();
    } catch (const OutputFailure& failure) {
      tell(failure);
    }
    return conversion_.status();
  }

 private:
  // Which files the inputs are, and how many bytes in all, where that is known.
  std::optional<std::uint64_t> takeNotes() {
    std::optional<std::uint64_t> total = 0;
    for (const std::string& path : options_.files) {
      const auto there = fileAt(path);
      if (there && S_ISREG(there->st_mode)) {
        inputs_.emplace(there->st_dev, there->st_ino);
        const off_t at = path == "-" ? lseek(0, 0, SEEK_CUR) : 0;
        if (total && there->st_size > at) *total += static_cast<std::uint64_t>(there->st_size - at);
      } else if (there && !S_ISDIR(there->st_mode)) {
        total.reset();
      }
    }
    return total;
  }

  void convertToOne() {
    std::unique_ptr<Output> output;
    if (!options_.has("check")) {
      output = std::make_unique<Output>(options_.value("output", "-"));
      refuseInputAs(*output);
    }
    bool isComplete = true;
    for (const std::string& path : options_.files) {
      std::uint64_t lost = 0;
      const Outcome outcome = conversion_.convert(path, output.get(), lost);
      isComplete = isComplete && outcome == Outcome::converted;
      if (outcome == Outcome::stoppedAtLoss) break;
    }
    if (!output) return;
    if (isComplete || output->isDirect()) {
      placement_.add(std::move(output), {});
    } else {
      printMessage(output->name() + ": not put in place");
    }
  }

  void convertEach() {
    for (const std::string& path : options_.files) {
      try {
        if (convertAlone(path) == Outcome::stoppedAtLoss) return;
      } catch (const OutputFailure& failure) {
        if (conversion_.report().isBroken()) throw;
        tell(failure);
      } catch (const InputFailure& failure) {
        refuse(path, failure.what());
      }
    }
  }

  // Converts a file to an output of its own.
  Outcome convertAlone(const std::string& path) {
    const std::string target = isInPlace_ ? path : targetInFolder(path);
    if (target.empty()) return refuse(path, "--output-dir takes neither absolute paths nor '..'");
    const auto there = fileAt(path);
    if (!there) return refuse(path, std::strerror(errno));
    if (isInPlace_ && !S_ISREG(there->st_mode)) return refuse(path, "not a regular file");
    // What has been converted is not in the encoding of the input any more.
    if (!taken_.insert(placeOf(target)).second) {
      return refuse(path,
                    isInPlace_ ? "is replaced or kept already" : "another output has its name");
    }
    const std::string backup = suffix_.empty() ? "" : path + suffix_;
    if (!backup.empty() && !takeFreeName(backup)) return refuse(path, backup + " exists already");
    if (isInPlace_ && !options_.has("force")) {
      if (const char* const other = conversion_.otherEncoding(path)) {
        conversion_.tell(Status::losses, path + ": left as it was: it looks like " + other +
                                             ", not " + options_.value("from") +
                                             "; --force converts it all the same");
        return Outcome::converted;
      }
    }
    if (!isInPlace_) makeFolderOf(target);
    auto output = std::make_unique<Output>(target);
    if (isInPlace_ && output->isDirect()) return refuse(path, "is being written");
    if (!isInPlace_) refuseInputAs(*output);
    std::uint64_t lost = 0;
    const Outcome outcome = conversion_.convert(path, output.get(), lost);
    if (outcome != Outcome::converted) return outcome;
    if (lost != 0 && options_.has("fail-on-loss")) {
      printMessage(target + (output->old() ? ": left as it was" : ": not written"));
    } else {
      placement_.add(std::move(output), backup);
    }
    return outcome;
  }

  // Empty for a path that leads out of the folder.
  std::string targetInFolder(const std::string& path) const {
    const fs::path below = path;
    if (below.is_absolute() || std::ranges::count(below, fs::path("..")) != 0) return {};
    return (fs::path(options_.value("output-dir")) / below).lexically_normal();
  }

  static void makeFolderOf(const fs::path& path) {
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    if (error) throw OutputFailure(path.parent_path().string() + ": " + error.message());
  }

  // Whether a name is neither that of a file nor promised to one.
  bool takeFreeName(const std::string& path) {
    std::error_code error;
    const bool isFree = fs::symlink_status(path, error).type() == fs::file_type::not_found;
    return isFree && taken_.insert(placeOf(path)).second;
  }

  // An output that is an input would be destroyed, or be read for ever.
  void refuseInputAs(const Output& output) const {
    const auto& old = output.old();
    if (old && inputs_.contains({old->st_dev, old->st_ino})) {
      throw OutputFailure(output.name() +
                          ": is an input too, which would be destroyed; use -i to replace it");
    }
  }

  Outcome refuse(const std::string& path, const std::string& why) {
    conversion_.tell(Status::failure, path + ": " + why);
    return Outcome::unreadable;
  }

  void tell(const OutputFailure& failure) {
    failure.isQuiet ? conversion_.fail() : conversion_.tell(Status::failure, failure.what());
  }

  const Options& options_;
  const bool isInPlace_ = options_.has("in-place");
  const std::string suffix_ = options_.value("in-place");
  std::set<std::pair<dev_t, ino_t>> inputs_;
  std::set<std::string> taken_;  // places that are written or kept
  const std::optional<std::uint64_t> total_;
  Conversion conversion_;
  Placement placement_;
};

}  // namespace

Status convertFiles(Options options) try {
  if (options.has("files-from")) {
    for (std::string& name : namesIn(options.value("files-from")))
      options.files.push_back(std::move(name));
  }
  return Run(options).convertAll();
} catch (const OutputFailure& failure) {
  printMessage(failure.what());
  return Status::failure;
} catch (const InputFailure& failure) {
  printMessage(nameOfInput(options.value("files-from")) + ": " + failure.what());
  return Status::failure;
}

}  // namespace cli
