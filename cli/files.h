// Reading and writing: every error is told, and a file is either the old one or the complete new
// one.

#ifndef SGBK_CLI_FILES_H
#define SGBK_CLI_FILES_H

#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace cli {

// What went wrong with a file. Empty when the reader of the pipe has gone: nobody wants to hear
// about it.
struct FileFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Before any file is opened. Keeps files from taking the numbers of standard streams that were
// closed: with them, output would go to the wrong file. Use of such a stream fails with "Bad file
// descriptor". Signals remove new files that are not in place yet.
void guardStreamsAndFiles();

// Where a path leads, symbolic links resolved, also when nothing is there yet.
std::string placeOf(const std::string& path);

class Input {
 public:
  // "-" is standard input. What fails throws FileFailure.
  explicit Input(const std::string& path);
  ~Input();
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  // Returns 0 at the end only, otherwise as soon as there is anything.
  std::size_t read(char* to, std::size_t size);

  const std::string& name() const { return name_; }
  int fd() const { return fd_; }
  [[noreturn]] void fail(const std::string& what) const;

 private:
  std::string name_;
  int fd_;
};

class Output {
 public:
  // A regular file is written beside `path`, with the mode and, where permitted, the owner of an
  // old one, until it is put in place. What is no regular file is written directly, and so is
  // standard output, by the name "-". What fails throws FileFailure.
  explicit Output(const std::string& path);
  // Removes what was not put in place.
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void write(std::string_view text);
  // Ends writing: a full disk or a network may only tell now.
  // isSynced  brings the file to the disk
  void finish(bool isSynced);
  // Gives the file its name. If it was not finished, it is now, and brought to the disk where it
  // replaces another one.
  // backup  a free name under which the old file stays; empty for none
  void putInPlace(const std::string& backup = {});

  const std::string& name() const { return name_; }
  int fd() const { return fd_; }
  bool isDirect() const { return target_.empty(); }
  // The file that is written directly or will be replaced, if there is one.
  const std::optional<struct stat>& old() const { return old_; }
  [[noreturn]] void fail(const std::string& what, int error = errno);
  bool hasFailed() const { return hasFailed_; }

 private:
  void openBeside(const std::string& path);
  void takeOverOwnerAndMode();

  std::string name_;
  int fd_ = -1;
  std::string target_;     // the regular file to replace, symbolic links resolved
  std::string temporary_;  // the name of the new file until then
  std::optional<struct stat> old_;
  bool hasFailed_ = false;
};

}  // namespace cli

#endif
