// Files under a passing name, which stay only after SIGKILL.

#ifndef SGBK_CLI_TEMPORARY_FILE_H
#define SGBK_CLI_TEMPORARY_FILE_H

#include <signal.h>

#include <list>
#include <string>

namespace cli {

// Signals wait while one of these lives.
class SignalsHeld {
 public:
  SignalsHeld();
  ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_;
};

class TemporaryFile {
 public:
  // folder  empty for the current one, or ending with '/'
  // On failure fd() is -1 and errno says why.
  explicit TemporaryFile(const std::string& folder);
  // Removes the file; the descriptor belongs to whoever asked for it.
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  int fd() const { return fd_; }
  const std::string& name() const { return *name_; }
  // Gives the file its name, in place of the old file with that name.
  // isNew   there must be no old file
  // Returns false, with errno, when that cannot be.
  bool rename(const std::string& to, bool isNew);

 private:
  void forget();

  int fd_ = -1;
  std::list<std::string>::iterator name_;
};

}  // namespace cli

#endif
