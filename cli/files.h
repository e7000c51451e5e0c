// Reading and writing: every error is reported, no output is left half written.

#ifndef SGBK_CLI_FILES_H
#define SGBK_CLI_FILES_H

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace cli {

struct InputFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct OutputFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
  // The reader of the pipe has gone: nobody wants to hear about it.
  bool isQuiet = false;
};

// Keeps files opened later from taking the numbers of standard streams that were closed: with
// them, output would go to the wrong file. Use of such a stream fails with "Bad file descriptor".
void occupyClosedStandardStreams();

// What messages call the input at `path`, where "-" is standard input.
std::string nameOfInput(const std::string& path);

class Input {
 public:
  // "-" is standard input. Throws InputFailure.
  explicit Input(const std::string& path);
  ~Input();
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  // Returns 0 at the end only. Throws InputFailure.
  std::size_t read(char* to, std::size_t size);

  const std::string& name() const { return name_; }
  const struct stat& status() const { return status_; }
  bool isTerminal() const;
  // Bytes from the position at the start to the end, where that is known.
  std::optional<std::uint64_t> size() const { return size_; }

 private:
  std::string name_;
  int fd_;
  struct stat status_;
  std::optional<std::uint64_t> size_;
};

class Output {
 public:
  Output() = default;  // standard output
  // Writes beside `path` and takes its place on commit(); what is no regular file, or "-", standard
  // output, is written directly. Throws OutputFailure.
  // replaced  the file whose mode and owner the new one takes over; null for a new output
  Output(const std::string& path, const struct stat* replaced);
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // Throws OutputFailure.
  void write(std::string_view text);
  // Makes the output final. With a backup name, the old file keeps its contents under that name.
  void commit(const std::string& backup = {});

  const std::string& name() const { return name_; }
  struct stat status() const;
  bool isDirect() const { return temporary_.empty(); }

 private:
  [[noreturn]] void fail(const std::string& what) const;
  void keepOld(const std::string& backup) const;

  std::string name_ = "standard output";
  int fd_ = 1;
  std::string target_;     // the regular file to replace, symbolic links resolved
  std::string temporary_;  // empty when written directly
  bool isDurable_ = false;
};

inline bool isSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The file behind `path`, standard input for "-", or nothing when there is none.
std::optional<struct stat> fileAt(const std::string& path);

}  // namespace cli

#endif
