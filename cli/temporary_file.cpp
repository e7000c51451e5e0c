#include "temporary_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace cli {
namespace {

// Of all temporary files. It changes only while signals are held, so that the handler sees it
// whole.
std::list<std::string> names;

extern "C" void removeAllAndEnd(int signal) {
  for (const std::string& name : names) unlink(name.c_str());
  // The default action was restored when the handler was called.
  raise(signal);
}

// Every signal that would end the process: SIGPIPE comes from messages that nobody reads any more,
// SIGXFSZ from a limit on the size of files.
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

SignalsHeld::SignalsHeld() {
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &before_);
}

TemporaryFile::TemporaryFile(const std::string& folder) {
  static const bool isReady = (catchSignals(), true);
  static_cast<void>(isReady);
  const SignalsHeld held;
  name_ = names.insert(names.end(), folder + ".sgbk-XXXXXX");
  fd_ = mkostemp(name_->data(), O_CLOEXEC);
  if (fd_ >= 0) return;
  const int error = errno;
  forget();
  errno = error;
}

TemporaryFile::~TemporaryFile() {
  const SignalsHeld held;
  if (name_ == names.end()) return;
  unlink(name_->c_str());
  forget();
}

bool TemporaryFile::rename(const std::string& to, bool isNew) {
  const SignalsHeld held;
  int result =
      renameat2(AT_FDCWD, name_->c_str(), AT_FDCWD, to.c_str(), isNew ? RENAME_NOREPLACE : 0);
  // Some file systems know only the plain call.
  if (result != 0 && errno == EINVAL && isNew) result = ::rename(name_->c_str(), to.c_str());
  if (result == 0) forget();
  return result == 0;
}

void TemporaryFile::forget() {
  names.erase(name_);
  name_ = names.end();
}

}  // namespace cli
