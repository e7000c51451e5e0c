#include "output.h"

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

#include "input.h"

namespace cli {
namespace {

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

bool isSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
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
bool catchSignals() {
  constexpr int kHarmless[] = {SIGCHLD, SIGCONT, SIGURG, SIGWINCH, SIGTSTP, SIGTTIN, SIGTTOU};
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    if (std::ranges::count(kHarmless, signal) != 0) continue;
    struct sigaction action;
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
    action.sa_handler = removeAllAndEnd;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
  }
  return true;
}

}  // namespace

std::string placeOf(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path place = fs::weakly_canonical(fs::absolute(resolved(path), error), error);
  return error ? path : place.string();
}

Output::Output(const std::string& path) : name_(path == "-" ? "standard output" : path) {
  if (path == "-") {
    fd_ = fcntl(1, F_DUPFD_CLOEXEC, 3);
  } else {
    struct stat status;
    if (stat(path.c_str(), &status) == 0) old_ = status;
    if (!old_ && errno == ELOOP) fail("cannot be written", errno);
    if (old_) fd_ = openedAlready(path, *old_);
    if (fd_ < 0 && (!old_ || S_ISREG(old_->st_mode))) {
      openBeside(path);
      return;
    }
    // By the name as given: links in /proc lead to names that do not exist, like "pipe:[123]".
    while (fd_ < 0 && (fd_ = open(path.c_str(), O_WRONLY | O_CLOEXEC)) < 0 && errno == EINTR) {
    }
  }
  if (fd_ < 0) fail("cannot be written", errno);
  struct stat status;
  if (fstat(fd_, &status) == 0) old_ = status;
}

void Output::openBeside(const std::string& path) {
  static const bool isCaught = catchSignals();
  static_cast<void>(isCaught);
  target_ = resolved(path);
  if (old_ && access(target_.c_str(), W_OK) != 0) fail("cannot be written", errno);
  const std::string folder = folderOf(target_);
  const SignalsHeld held;
  std::string name = folder + ".sgbk-XXXXXX";
  fd_ = mkostemp(name.data(), O_CLOEXEC);
  if (fd_ < 0) {
    fail("cannot make a new file in its folder, " + (folder.empty() ? "." : folder), errno);
  }
  temporaries.insert(temporary_ = name);
}

// Only root may give files away, and others only to groups of theirs. The mode comes last, as
// writing and a new owner clear parts of it; what lends the rights of an owner or of a group does
// not lend those of another.
void Output::takeOverOwnerAndMode() {
  mode_t mode = old_ ? old_->st_mode & 07777 : modeOfNewFiles();
  if (old_) {
    const bool isGroupKept = fchown(fd_, static_cast<uid_t>(-1), old_->st_gid) == 0;
    const bool isOwnerKept = fchown(fd_, old_->st_uid, static_cast<gid_t>(-1)) == 0;
    if (!isGroupKept) mode &= ~static_cast<mode_t>(S_ISGID);
    if (!isOwnerKept) mode &= ~static_cast<mode_t>(S_ISUID);
  }
  if (fchmod(fd_, mode) != 0) fail("cannot take over the mode", errno);
}

Output::~Output() {
  if (fd_ > 2) close(fd_);
  if (temporary_.empty()) return;
  const SignalsHeld held;
  unlink(temporary_.c_str());
  temporaries.erase(temporary_);
}

void Output::fail(const std::string& what, int error) const {
  throw OutputFailure(error == EPIPE ? "" : name_ + ": " + what + ": " + std::strerror(error));
}

void Output::write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(fd_, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (!canTryAgain(fd_, POLLOUT)) {
      fail("write error", errno);
    }
  }
}

void Output::finish(bool isSynced) {
  if (!isDirect()) takeOverOwnerAndMode();
  while (isSynced && fsync(fd_) != 0) {
    if (errno != EINTR) fail("write error", errno);
  }
  const int fd = fd_;
  fd_ = -1;
  // After a signal, too, the descriptor is closed.
  if (close(fd) != 0 && errno != EINTR) fail("write error", errno);
}

void Output::putInPlace(const std::string& backup) {
  if (fd_ >= 0) finish(!isDirect() && old_);
  if (isDirect()) return;
  // A signal would leave a backup of a file that is still there.
  const SignalsHeld held;
  bool isLinked = false;
  if (!backup.empty()) {
    isLinked = link(target_.c_str(), backup.c_str()) == 0;
    // Some file systems have no second names; the file is then away for a moment.
    if (!isLinked &&
        renameat2(AT_FDCWD, target_.c_str(), AT_FDCWD, backup.c_str(), RENAME_NOREPLACE) != 0) {
      fail("cannot keep the old file as " + backup, errno);
    }
  }
  int result = renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, target_.c_str(),
                         old_ ? 0 : RENAME_NOREPLACE);
  // Some file systems know only the plain call.
  if (result != 0 && errno == EINVAL) result = rename(temporary_.c_str(), target_.c_str());
  if (result == 0) {
    temporaries.erase(temporary_);
    return temporary_.clear();
  }
  const int error = errno;
  if (isLinked) {
    unlink(backup.c_str());
  } else if (!backup.empty()) {
    rename(backup.c_str(), target_.c_str());
  }
  fail("cannot be put in place", error);
}

}  // namespace cli
