#include "files.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace cli {
namespace {

// The names of the temporary files, for the signal handler to remove: an output and a report.
struct TemporaryName {
  volatile sig_atomic_t isInUse = 0;
  char name[4096];
};
std::array<TemporaryName, 2> temporaries;

// SIGPIPE comes from messages as well: nobody reads them any more, and the output is not complete.
constexpr std::array<int, 5> kEndingSignals = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM};

extern "C" void removeTemporariesAndEnd(int signal) {
  for (const TemporaryName& temporary : temporaries) {
    if (temporary.isInUse != 0) unlink(temporary.name);
  }
  // The default action was restored when the handler was called.
  raise(signal);
}

void rememberTemporary(const std::string& name) {
  const auto slot = std::find_if(temporaries.begin(), temporaries.end(),
                                 [](const TemporaryName& t) { return t.isInUse == 0; });
  if (slot == temporaries.end() || name.size() >= sizeof slot->name) return;
  std::memcpy(slot->name, name.c_str(), name.size() + 1);
  slot->isInUse = 1;
  for (const int signal : kEndingSignals) {
    struct sigaction now;
    sigaction(signal, nullptr, &now);
    if (now.sa_handler != SIG_DFL) continue;
    struct sigaction action = {};
    action.sa_handler = removeTemporariesAndEnd;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
  }
}

void forgetTemporary(const std::string& name) {
  for (TemporaryName& temporary : temporaries) {
    if (temporary.isInUse != 0 && name == temporary.name) temporary.isInUse = 0;
  }
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

// Where a symbolic link leads in the end, also when nothing is there yet.
std::string resolved(std::string path) {
  for (int links = 0; links < 40; ++links) {
    char to[4096];
    const ssize_t size = readlink(path.c_str(), to, sizeof to);
    if (size < 0 || static_cast<std::size_t>(size) == sizeof to) break;
    const std::string next(to, static_cast<std::size_t>(size));
    path = next.starts_with('/') ? next : folderOf(path) + next;
  }
  return path;
}

// A descriptor of its own for a path that only names an open one, such as /dev/stdout or /dev/fd/3:
// the file behind it must not be replaced, and a socket cannot be opened again. -1 for other paths.
int openedAlready(const std::string& path, const struct stat& file) {
  int named = 1;
  if (std::sscanf(path.c_str(), "/dev/fd/%d", &named) != 1) {
    std::sscanf(path.c_str(), "/proc/self/fd/%d", &named);
  }
  for (const int fd : {1, 2, named}) {
    struct stat standard;
    const int flags = fcntl(fd, F_GETFL);
    if (flags == -1 || (flags & O_ACCMODE) == O_RDONLY) continue;
    if (fstat(fd, &standard) != 0 || !isSameFile(standard, file)) continue;
    return fcntl(fd, F_DUPFD_CLOEXEC, 3);
  }
  return -1;
}

mode_t modeOfNewFiles() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// After a failed call: whether a signal or, where somebody made the stream non-blocking, the other
// side was the only reason. Waits for it.
bool canTryAgain(int fd, short events) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN) return false;
  struct pollfd wanted = {fd, events, 0};
  poll(&wanted, 1, -1);
  return true;
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

std::optional<struct stat> fileAt(const std::string& path) {
  struct stat status;
  const bool isThere = path == "-" ? fstat(0, &status) == 0 : stat(path.c_str(), &status) == 0;
  if (!isThere) return std::nullopt;
  return status;
}

std::string nameOfInput(const std::string& path) { return path == "-" ? "standard input" : path; }

Input::Input(const std::string& path) : name_(nameOfInput(path)) {
  fd_ = path == "-" ? 0 : open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0 || fstat(fd_, &status_) != 0) throw InputFailure(std::strerror(errno));
  if (S_ISDIR(status_.st_mode)) throw InputFailure(std::strerror(EISDIR));
  if (S_ISREG(status_.st_mode)) {
    const off_t at = lseek(fd_, 0, SEEK_CUR);
    // Files of the kernel's, as in /proc, give their size as 0.
    if (at >= 0 && status_.st_size > at) size_ = static_cast<std::uint64_t>(status_.st_size - at);
    posix_fadvise(fd_, 0, 0, POSIX_FADV_SEQUENTIAL);
  }
}

Input::~Input() {
  if (fd_ > 2) close(fd_);
}

std::size_t Input::read(char* to, std::size_t size) {
  for (;;) {
    const ssize_t got = ::read(fd_, to, size);
    if (got >= 0) return static_cast<std::size_t>(got);
    if (!canTryAgain(fd_, POLLIN)) throw InputFailure(std::strerror(errno));
  }
}

bool Input::isTerminal() const { return isatty(fd_) == 1; }

Output::Output(const std::string& path, const struct stat* replaced)
    : name_(path), isDurable_(replaced != nullptr) {
  if (path == "-") {
    // A descriptor of its own: an output and a report may both go there.
    name_ = "standard output";
    fd_ = fcntl(1, F_DUPFD_CLOEXEC, 3);
    if (fd_ < 0) fail("cannot be written");
    return;
  }
  struct stat status;
  const struct stat* const there = stat(path.c_str(), &status) == 0 ? &status : nullptr;
  if (there == nullptr && errno == ELOOP) fail("cannot be written");
  fd_ = there != nullptr && replaced == nullptr ? openedAlready(path, *there) : -1;
  if (fd_ >= 0) return;
  if (there != nullptr && !S_ISREG(there->st_mode)) {
    // By the name as given: links in /proc lead to names that do not exist, like "pipe:[123]".
    fd_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd_ < 0) fail("cannot be written");
    return;
  }
  target_ = resolved(path);
  if (there != nullptr && access(target_.c_str(), W_OK) != 0) fail("cannot be written");
  temporary_ = folderOf(target_) + ".sgbk-XXXXXX";
  fd_ = mkostemp(temporary_.data(), O_CLOEXEC);
  if (fd_ < 0) {
    temporary_.clear();
    fail("cannot be written");
  }
  rememberTemporary(temporary_);
  // Only root may give files away; the mode comes last, as a new owner clears parts of it.
  if (there != nullptr && fchown(fd_, there->st_uid, there->st_gid) != 0) errno = 0;
  if (fchmod(fd_, there != nullptr ? there->st_mode & 07777 : modeOfNewFiles()) != 0) {
    fail("cannot take over the mode");
  }
}

Output::~Output() {
  if (fd_ > 2) close(fd_);
  if (!temporary_.empty()) {
    unlink(temporary_.c_str());
    forgetTemporary(temporary_);
  }
}

void Output::fail(const std::string& what) const {
  const int error = errno;
  OutputFailure failure(name_ + ": " + what + ": " + std::strerror(error));
  failure.isQuiet = error == EPIPE;
  throw failure;
}

void Output::write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(fd_, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (!canTryAgain(fd_, POLLOUT)) {
      fail("write error");
    }
  }
}

void Output::commit(const std::string& backup) {
  if (isDurable_ && fsync(fd_) != 0) fail("write error");
  const int fd = fd_;
  fd_ = -1;
  // A full disk or a network may only tell now.
  if (close(fd) != 0) fail("write error");
  if (temporary_.empty()) return;
  if (!backup.empty()) keepOld(backup);
  if (rename(temporary_.c_str(), target_.c_str()) != 0) fail("cannot be put in place");
  forgetTemporary(temporary_);
  temporary_.clear();
}

// Gives the old file a second name, which takes the place of an older backup in one step.
void Output::keepOld(const std::string& backup) const {
  const std::string second = folderOf(backup) + temporary_.substr(folderOf(target_).size()) + '~';
  const bool isLinked = link(target_.c_str(), second.c_str()) == 0;
  // Some file systems have no second names; the file is then away for a moment.
  const bool isKept = rename((isLinked ? second : target_).c_str(), backup.c_str()) == 0;
  const int error = errno;
  // Also after success: renaming does nothing when the backup is a name of the old file already.
  if (isLinked) unlink(second.c_str());
  errno = error;
  if (!isKept) fail("cannot keep the old file as " + backup);
}

struct stat Output::status() const {
  struct stat status = {};
  // For a file that is written beside its name, the one that it will replace.
  if (temporary_.empty()) {
    fstat(fd_, &status);
  } else if (const auto there = fileAt(target_)) {
    status = *there;
  }
  return status;
}

}  // namespace cli
