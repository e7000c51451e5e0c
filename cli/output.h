// Writing: every error is reported, and a file is either the old one or the complete new one.

#ifndef SGBK_CLI_OUTPUT_H
#define SGBK_CLI_OUTPUT_H

#include <sys/stat.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "temporary_file.h"

namespace cli {

struct OutputFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
  // The reader of the pipe has gone: nobody wants to hear about it.
  bool isQuiet = false;
};

class Output {
 public:
  // A regular file is written beside `path`, with the mode and, where permitted, the owner of an
  // old one, until it is put in place. What is no regular file is written directly, and so is
  // standard output, by the name "-". Throws OutputFailure.
  explicit Output(const std::string& path);
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // These throw OutputFailure.
  void write(std::string_view text);
  // Ends writing: a full disk or a network may only tell now.
  // isSynced  brings the file to the disk
  void finish(bool isSynced);
  // Gives the file its name.
  // backup  a free name under which the old file stays; empty for none
  void putInPlace(const std::string& backup = {});

  const std::string& name() const { return name_; }
  int fd() const { return fd_; }
  bool isDirect() const { return !temporary_; }
  // The file that is written directly or will be replaced, if there is one.
  const std::optional<struct stat>& old() const { return old_; }
  [[noreturn]] void fail(const std::string& what, int error) const;

 private:
  void openBeside(const std::string& path);
  void takeOverOwnerAndMode();

  std::string name_;
  int fd_ = -1;
  std::string target_;  // the regular file to replace, symbolic links resolved
  std::optional<TemporaryFile> temporary_;
  std::optional<struct stat> old_;
};

// Where a path leads, symbolic links resolved, also when nothing is there yet.
std::string placeOf(const std::string& path);

// Puts finished outputs in place. What replaces a file has to be on the disk before: a few are
// brought there one by one, thousands of small ones together, as that takes no longer than one.
class Placement {
 public:
  // onFailure  called when an output that waited for others fails in the end
  explicit Placement(std::function<void(const OutputFailure&)> onFailure)
      : onFailure_(std::move(onFailure)) {}
  ~Placement();
  Placement(const Placement&) = delete;
  Placement& operator=(const Placement&) = delete;

  // Throws OutputFailure.
  void add(std::unique_ptr<Output> output, const std::string& backup);
  // Puts in place what waits.
  void flush();

 private:
  struct Waiting {
    std::unique_ptr<Output> output;
    std::string backup;
    dev_t device;
  };

  std::function<void(const OutputFailure&)> onFailure_;
  int synced_ = 0;
  std::vector<Waiting> waiting_;
  std::map<dev_t, int> devices_;  // of those that wait, each with a descriptor on it
  off_t bytes_ = 0;
};

}  // namespace cli

#endif
