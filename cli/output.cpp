#include "output.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

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

// Calls a function like fsync() until no signal comes between; returns errno, 0 for success.
template <class Call>
int uninterrupted(Call call, int fd) {
  while (call(fd) != 0) {
    if (errno != EINTR) return errno;
  }
  return 0;
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
  target_ = resolved(path);
  if (old_ && access(target_.c_str(), W_OK) != 0) fail("cannot be written", errno);
  const std::string folder = folderOf(target_);
  temporary_.emplace(folder);
  fd_ = temporary_->fd();
  if (fd_ < 0) {
    fail("cannot make a new file in its folder, " + (folder.empty() ? "." : folder), errno);
  }
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
}

void Output::fail(const std::string& what, int error) const {
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
      fail("write error", errno);
    }
  }
}

void Output::finish(bool isSynced) {
  if (temporary_) takeOverOwnerAndMode();
  const int error = isSynced ? uninterrupted(fsync, fd_) : 0;
  if (error != 0) fail("write error", error);
  const int fd = fd_;
  fd_ = -1;
  // After a signal, too, the descriptor is closed.
  if (close(fd) != 0 && errno != EINTR) fail("write error", errno);
}

void Output::putInPlace(const std::string& backup) {
  if (!temporary_) return;
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
  if (temporary_->rename(target_, !old_)) return;
  const int error = errno;
  if (isLinked) {
    unlink(backup.c_str());
  } else if (!backup.empty()) {
    rename(backup.c_str(), target_.c_str());
  }
  fail("cannot be put in place", error);
}

Placement::~Placement() {
  for (const auto& [device, fd] : devices_) close(fd);
}

void Placement::add(std::unique_ptr<Output> output, const std::string& backup) {
  constexpr int kOneByOne = 4;
  constexpr off_t kSmall = 1 << 20;
  constexpr off_t kMostBytes = 256 << 20;
  constexpr std::size_t kMost = 4096;
  if (output->isDirect() || !output->old()) {
    output->finish(false);
    return output->putInPlace();
  }
  struct stat status;
  if (fstat(output->fd(), &status) != 0) output->fail("write error", errno);
  if (status.st_size > kSmall || synced_ < kOneByOne) {
    ++synced_;
    output->finish(true);
    return output->putInPlace(backup);
  }
  if (!devices_.contains(status.st_dev)) {
    const int fd = fcntl(output->fd(), F_DUPFD_CLOEXEC, 3);
    if (fd < 0) output->fail("write error", errno);
    devices_.emplace(status.st_dev, fd);
  }
  output->finish(false);
  waiting_.push_back({std::move(output), backup, status.st_dev});
  bytes_ += status.st_size;
  if (bytes_ > kMostBytes || waiting_.size() == kMost) flush();
}

void Placement::flush() {
  std::map<dev_t, int> errors;
  for (const auto& [device, fd] : devices_) {
    errors[device] = uninterrupted(syncfs, fd);
    close(fd);
  }
  devices_.clear();
  bytes_ = 0;
  for (const auto& [output, backup, device] : waiting_) {
    try {
      if (errors[device] != 0) output->fail("write error", errors[device]);
      output->putInPlace(backup);
    } catch (const OutputFailure& failure) {
      onFailure_(failure);
    }
  }
  waiting_.clear();
}

}  // namespace cli
