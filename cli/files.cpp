#include "files.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <set>
#include <utility>

namespace cli {
namespace {

namespace fs = std::filesystem;

// Where a symbolic link leads in the end, also when nothing is there yet.
fs::path resolved(fs::path path) {
  std::error_code error;
  for (int links = 0; links < 40; ++links) {
    const fs::path next = fs::read_symlink(path, error);
    if (error) break;
    path.replace_filename(next);
  }
  return path;
}

int openFile(const std::string& path, int mode) {
  return static_cast<int>(TEMP_FAILURE_RETRY(open(path.c_str(), mode | O_CLOEXEC)));
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
    if (fstat(fd, &standard) != 0) continue;
    if (standard.st_dev != file.st_dev || standard.st_ino != file.st_ino) continue;
    return fcntl(fd, F_DUPFD_CLOEXEC, 3);
  }
  return -1;
}

// The names of new files that are not in place yet. They change only while signals are held, so
// that the handler sees them whole.
std::set<std::string> temporaries;

// Signals wait while one of these lives.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before_);
  }
  ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_;
};

extern "C" void removeAllAndEnd(int signal) {
  for (const std::string& name : temporaries) unlink(name.c_str());
  // The default action was restored when the handler was called.
  raise(signal);
}

// Every signal that would end the process, so that new files stay after SIGKILL alone: SIGPIPE
// comes from messages that nobody reads any more, SIGXFSZ from a limit on the size of files.
void catchSignals() {
  constexpr int kHarmless[] = {SIGCHLD, SIGCONT, SIGURG, SIGWINCH, SIGTSTP, SIGTTIN, SIGTTOU};
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    if (std::ranges::count(kHarmless, signal) != 0) continue;
    struct sigaction action;
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
    action.sa_handler = removeAllAndEnd;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
  }
}

}  // namespace

void guardStreamsAndFiles() {
  catchSignals();
  for (int fd = 0; fd <= 2; ++fd) {
    if (fcntl(fd, F_GETFD) != -1) continue;
    // With what can neither be read or written nor, as /dev/stdout, be opened for it.
    const int opened = fd == 0 ? open("/dev/null", O_WRONLY) : open("/", O_PATH);
    if (opened != fd) close(opened);
  }
}

std::string placeOf(const std::string& path) {
  std::error_code error;
  const fs::path place = fs::weakly_canonical(fs::absolute(resolved(path), error), error);
  return error ? path : place.string();
}

Input::Input(const std::string& path)
    : name_(path == "-" ? "standard input" : path),
      fd_(path == "-" ? STDIN_FILENO : openFile(path, O_RDONLY)) {
  if (fd_ < 0) fail(std::strerror(errno));
  posix_fadvise(fd_, 0, 0, POSIX_FADV_SEQUENTIAL);
}

Input::~Input() {
  if (fd_ != STDIN_FILENO) close(fd_);
}

void Input::fail(const std::string& what) const { throw FileFailure(name_ + ": " + what); }

// Of a directory, it is reading that fails.
std::size_t Input::read(char* to, std::size_t size) {
  for (;;) {
    const ssize_t got = ::read(fd_, to, size);
    if (got >= 0) return static_cast<std::size_t>(got);
    if (!canTryAgain(fd_, POLLIN)) fail(std::strerror(errno));
  }
}

Output::Output(const std::string& path) : name_(path == "-" ? "standard output" : path) {
  struct stat status;
  if (path == "-") {
    fd_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  } else {
    if (stat(path.c_str(), &status) == 0) old_ = status;
    if (!old_ && errno == ELOOP) fail("cannot be written");
    if (old_) fd_ = openedAlready(path, *old_);
    if (fd_ < 0 && (!old_ || S_ISREG(old_->st_mode))) {
      openBeside(path);
    } else if (fd_ < 0) {
      // By the name as given: links in /proc lead to names that do not exist, like "pipe:[123]".
      fd_ = openFile(path, O_WRONLY);
    }
  }
  if (fd_ < 0) fail("cannot be written");
  if (isDirect() && fstat(fd_, &status) == 0) old_ = status;
}

void Output::openBeside(const std::string& path) {
  target_ = resolved(path);
  if (old_ && access(target_.c_str(), W_OK) != 0) fail("cannot be written");
  const std::string folder = target_.substr(0, target_.rfind('/') + 1);
  const SignalsHeld held;
  std::string name = folder + ".sgbk-XXXXXX";
  fd_ = mkostemp(name.data(), O_CLOEXEC);
  if (fd_ < 0) fail("cannot make a new file in its folder, " + (folder.empty() ? "." : folder));
  temporaries.insert(temporary_ = name);
}

// Only root may give files away, and others only to groups of theirs. The mode comes last, as
// writing and a new owner clear parts of it; what lends the rights of an owner or of a group does
// not lend those of another.
void Output::takeOverOwnerAndMode() {
  const mode_t mask = umask(0);
  umask(mask);
  mode_t mode = old_ ? old_->st_mode & 07777 : 0666 & ~mask;
  if (old_ && fchown(fd_, static_cast<uid_t>(-1), old_->st_gid) != 0) mode &= ~mode_t{S_ISGID};
  if (old_ && fchown(fd_, old_->st_uid, static_cast<gid_t>(-1)) != 0) mode &= ~mode_t{S_ISUID};
  if (fchmod(fd_, mode) != 0) fail("cannot take over the mode");
}

Output::~Output() {
  if (fd_ >= 0) close(fd_);
  if (temporary_.empty()) return;
  const SignalsHeld held;
  unlink(temporary_.c_str());
  temporaries.erase(temporary_);
}

void Output::fail(const std::string& what, int error) {
  hasFailed_ = true;
  throw FileFailure(error == EPIPE ? "" : name_ + ": " + what + ": " + std::strerror(error));
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

void Output::finish(bool isSynced) {
  if (!isDirect()) takeOverOwnerAndMode();
  if (isSynced && TEMP_FAILURE_RETRY(fsync(fd_)) != 0) fail("write error");
  // After a signal, too, the descriptor is closed.
  if (close(std::exchange(fd_, -1)) != 0 && errno != EINTR) fail("write error");
}

void Output::putInPlace(const std::string& backup) {
  if (fd_ >= 0) finish(!isDirect() && old_);
  if (isDirect()) return;
  // A signal would leave a backup of a file that is still there.
  const SignalsHeld held;
  // Some file systems have no second names; the file is then away for a moment.
  if (!backup.empty() && link(target_.c_str(), backup.c_str()) != 0 &&
      renameat2(AT_FDCWD, target_.c_str(), AT_FDCWD, backup.c_str(), RENAME_NOREPLACE) != 0) {
    fail("cannot keep the old file as " + backup);
  }
  int result = renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, target_.c_str(),
                         old_ ? 0 : RENAME_NOREPLACE);
  // Some file systems know only the plain call.
  if (result != 0 && errno == EINVAL) result = rename(temporary_.c_str(), target_.c_str());
  if (result != 0) {
    const int error = errno;
    // Renaming one of two names of a file to the other does nothing.
    if (!backup.empty() && rename(backup.c_str(), target_.c_str()) == 0) unlink(backup.c_str());
    fail("cannot be put in place", error);
  }
  temporaries.erase(temporary_);
  temporary_.clear();
}

}  // namespace cli
