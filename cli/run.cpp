#include "run.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <set>

#include "conversion.h"
#include "input.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

void tellOf(const std::string& path, const InputFailure& failure) {
  tell(Status::failure, nameOfInput(path) + ": " + failure.what());
}

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
      : options_(options), total_(takeNotes()), conversion_(options, total_) {
    if (const Output* const report = conversion_.report().output()) {
      refuseInputAs(*report);
      if (!report->isDirect()) taken_.insert(placeOf(report->name()));
    }
    if (options_.has("output") && taken_.contains(placeOf(options_.value("output")))) {
      throw UsageError("--report and -o name the same file");
    }
  }

  void convertAll() {
    try {
      options_.isEach() ? convertEach() : convertToOne();
    } catch (const OutputFailure& failure) {
      tell(Status::failure, failure.what());
    }
    putAllInPlace();
    conversion_.report().finish();
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
      try {
        if (conversion_.convert(path, output.get())) continue;
        isComplete = false;
        break;
      } catch (const InputFailure& failure) {
        tellOf(path, failure);
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

  void convertEach() {
    for (const std::string& path : options_.files) {
      try {
        if (!convertAlone(path)) return;
      } catch (const OutputFailure& failure) {
        if (conversion_.report().isBroken()) throw;
        tell(Status::failure, failure.what());
      } catch (const InputFailure& failure) {
        tellOf(path, failure);
      }
    }
  }

  // Converts a file to an output of its own. False when a loss was not permitted.
  bool convertAlone(const std::string& path) {
    const std::string target = isInPlace_ ? path : targetInFolder(path);
    if (target.empty()) throw InputFailure("--output-dir takes neither absolute paths nor '..'");
    const auto there = fileAt(path);
    if (!there) throw InputFailure(std::strerror(errno));
    if (isInPlace_ && !S_ISREG(there->st_mode)) throw InputFailure("not a regular file");
    // What has been converted is not in the encoding of the input any more.
    if (!taken_.insert(placeOf(target)).second) {
      throw InputFailure(isInPlace_ ? "is replaced or kept already"
                                    : "another output has its name");
    }
    const std::string backup = suffix_.empty() ? "" : path + suffix_;
    if (!backup.empty() && !takeFreeName(backup)) throw InputFailure(backup + " exists already");
    if (isInPlace_ && !options_.has("force")) {
      if (const char* const other = conversion_.otherEncoding(path)) {
        tell(Status::losses, path + ": left as it was: it looks like " + other + ", not " +
                                 options_.value("from") + "; --force converts it all the same");
        return true;
      }
    }
    if (!isInPlace_) makeFolderOf(target);
    auto output = std::make_unique<Output>(target);
    if (isInPlace_ && output->isDirect()) throw InputFailure("is being written");
    if (!isInPlace_) refuseInputAs(*output);
    if (!conversion_.convert(path, output.get())) return false;
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
    constexpr int kOneByOne = 4;
    constexpr off_t kSmall = 1 << 20;
    constexpr off_t kMostBytes = 256 << 20;
    constexpr std::size_t kMost = 4096;
    if (output->isDirect() || !output->old()) return output->putInPlace();
    struct stat status;
    if (fstat(output->fd(), &status) != 0) output->fail("write error", errno);
    if (status.st_size > kSmall || placedAlone_ < kOneByOne) {
      ++placedAlone_;
      return output->putInPlace(backup);
    }
    if (status.st_dev != device_) putAllInPlace();
    if (onDevice_ < 0) {
      device_ = status.st_dev;
      onDevice_ = fcntl(output->fd(), F_DUPFD_CLOEXEC, 3);
      if (onDevice_ < 0) output->fail("write error", errno);
    }
    output->finish(false);
    waiting_.emplace_back(std::move(output), backup);
    waitingBytes_ += status.st_size;
    if (waitingBytes_ > kMostBytes || waiting_.size() == kMost) putAllInPlace();
  }

  void putAllInPlace() {
    if (onDevice_ < 0) return;
    int error = EINTR;
    while (error == EINTR) error = syncfs(onDevice_) == 0 ? 0 : errno;
    close(std::exchange(onDevice_, -1));
    for (const auto& [output, backup] : waiting_) {
      try {
        if (error != 0) output->fail("write error", error);
        output->putInPlace(backup);
      } catch (const OutputFailure& failure) {
        tell(Status::failure, failure.what());
      }
    }
    waiting_.clear();
    waitingBytes_ = 0;
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

  const Options& options_;
  const bool isInPlace_ = options_.has("in-place");
  const std::string suffix_ = options_.value("in-place");
  std::set<std::pair<dev_t, ino_t>> inputs_;
  std::set<std::string> taken_;  // places that are written or kept
  const std::optional<std::uint64_t> total_;
  Conversion conversion_;

  // Outputs that wait to be put in place, all on one device.
  std::vector<std::pair<std::unique_ptr<Output>, std::string>> waiting_;  // with their backups
  off_t waitingBytes_ = 0;
  dev_t device_ = 0;
  int onDevice_ = -1;  // a descriptor
  int placedAlone_ = 0;
};

}  // namespace

void convertFiles(Options options) {
  try {
    const std::string list = options.value("files-from");
    const auto names = list.empty() ? std::vector<std::string>() : namesIn(list);
    options.files.insert(options.files.end(), names.begin(), names.end());
  } catch (const InputFailure& failure) {
    return tellOf(options.value("files-from"), failure);
  }
  Run(options).convertAll();
}

}  // namespace cli
