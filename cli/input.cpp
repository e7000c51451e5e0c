#include "input.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace cli {
namespace {

int openForReading(const std::string& path) {
  for (;;) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd >= 0) return fd;
    if (errno != EINTR) throw InputFailure(std::strerror(errno));
  }
}

}  // namespace

void occupyClosedStandardStreams() {
  for (int fd = 0; fd <= 2; ++fd) {
    if (fcntl(fd, F_GETFD) != -1) continue;
    // With what can neither be read or written nor, as /dev/stdout, be opened for it.
    const int opened = fd == 0 ? open("/dev/null", O_WRONLY) : open("/", O_PATH);
    if (opened != fd) close(opened);
  }
}

std::string nameOfInput(const std::string& path) { return path == "-" ? "standard input" : path; }

std::optional<struct stat> fileAt(const std::string& path) {
  struct stat status;
  const bool isThere = path == "-" ? fstat(0, &status) == 0 : stat(path.c_str(), &status) == 0;
  if (!isThere) return std::nullopt;
  return status;
}

bool canTryAgain(int fd, short events) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN) return false;
  struct pollfd wanted = {fd, events, 0};
  poll(&wanted, 1, -1);
  return true;
}

Input::Input(const std::string& path) : fd_(path == "-" ? 0 : openForReading(path)) {
  posix_fadvise(fd_, 0, 0, POSIX_FADV_SEQUENTIAL);
}

Input::~Input() {
  if (fd_ > 2) close(fd_);
}

// Of a directory, it is reading that fails.
std::size_t Input::read(char* to, std::size_t size) {
  for (;;) {
    const ssize_t got = ::read(fd_, to, size);
    if (got >= 0) return static_cast<std::size_t>(got);
    if (!canTryAgain(fd_, POLLIN)) throw InputFailure(std::strerror(errno));
  }
}

bool Input::isTerminal() const { return isatty(fd_) == 1; }

}  // namespace cli
