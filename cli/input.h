// Reading.

#ifndef SGBK_CLI_INPUT_H
#define SGBK_CLI_INPUT_H

#include <sys/stat.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace cli {

struct InputFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Keeps files opened later from taking the numbers of standard streams that were closed: with
// them, output would go to the wrong file. Use of such a stream fails with "Bad file descriptor".
void occupyClosedStandardStreams();

// What messages call the input at `path`, where "-" is standard input.
std::string nameOfInput(const std::string& path);

// The file behind `path`, standard input for "-", or nothing when there is none. Opens nothing.
std::optional<struct stat> fileAt(const std::string& path);

// After a failed call: whether a signal or, where somebody made the stream non-blocking, the other
// side was the only reason. Waits for it.
bool canTryAgain(int fd, short events);

class Input {
 public:
  // "-" is standard input. Throws InputFailure.
  explicit Input(const std::string& path);
  ~Input();
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  // Returns 0 at the end only, otherwise as soon as there is anything. Throws InputFailure.
  std::size_t read(char* to, std::size_t size);

  bool isTerminal() const;

 private:
  int fd_;
};

}  // namespace cli

#endif
