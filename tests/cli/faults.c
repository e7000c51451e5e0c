/* Loaded before the C library: makes the calls of the command fail where FAULT says so.
 *
 *   FAULT=12:15:0   the 12th call sends signal 15 at its end
 *   FAULT=12:0:28   the 12th call fails with errno 28; 12:0:28:+ so do all such calls after it
 *   FAULT=short     every call is interrupted once, and little is read and written at a time
 *
 * FAULT_LOG names a file that gets the name of each call. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

static int number, at, with_signal, with_error, is_short, log_file = -1;
static char goes_on;

__attribute__((constructor)) static void begin(void) {
  const char *fault = getenv("FAULT"), *log = getenv("FAULT_LOG");
  is_short = fault != NULL && strcmp(fault, "short") == 0;
  if (fault != NULL) sscanf(fault, "%d:%d:%d:%c", &at, &with_signal, &with_error, &goes_on);
  if (log != NULL) log_file = (int)syscall(SYS_open, log, O_WRONLY | O_CREAT | O_APPEND, 0600);
}

/* Whether the call fails, with errno. */
static int strikes(const char *name) {
  ++number;
  if (log_file >= 0) {
    syscall(SYS_write, log_file, name, strlen(name));
    syscall(SYS_write, log_file, "\n", 1);
  }
  errno = EINTR;
  if (is_short) return number % 2;
  errno = with_error;
  return with_error != 0 && (number == at || (goes_on && number > at && strchr("wmlrf", *name)));
}

static long after(long result) {
  const int error = errno;
  if (number == at && with_signal != 0) kill(getpid(), with_signal);
  errno = error;
  return result;
}

#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))
#define FAIL_OR(name, ...) (strikes(#name) ? -1 : after(REAL(name)(__VA_ARGS__)))

int open(const char *path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = va_arg(more, mode_t);
  va_end(more);
  return (int)FAIL_OR(open, path, flags, mode);
}

ssize_t read(int fd, void *to, size_t size) {
  return FAIL_OR(read, fd, to, is_short && size > 3 ? 3 : size);
}

ssize_t write(int fd, const void *from, size_t size) {
  return FAIL_OR(write, fd, from, is_short && size > 5 ? 5 : size);
}

int close(int fd) { /* the descriptor is gone all the same */
  const int fails = strikes("close"), error = errno;
  const int result = (int)after(REAL(close)(fd));
  if (fails) errno = error;
  return fails ? -1 : result;
}

/* Calls that no signal interrupts. */
#define CERTAIN(name, ...) (int)(is_short ? REAL(name)(__VA_ARGS__) : FAIL_OR(name, __VA_ARGS__))

int fsync(int fd) { return (int)FAIL_OR(fsync, fd); }
int syncfs(int fd) { return (int)FAIL_OR(syncfs, fd); }
int mkostemp(char *name, int flags) { return CERTAIN(mkostemp, name, flags); }
int link(const char *from, const char *to) { return CERTAIN(link, from, to); }
int rename(const char *from, const char *to) { return CERTAIN(rename, from, to); }
int renameat2(int from_in, const char *from, int to_in, const char *to, unsigned flags) {
  return CERTAIN(renameat2, from_in, from, to_in, to, flags);
}
int mkdir(const char *path, mode_t mode) { return CERTAIN(mkdir, path, mode); }
int fchmod(int fd, mode_t mode) { return CERTAIN(fchmod, fd, mode); }
int fchown(int fd, uid_t owner, gid_t group) { return CERTAIN(fchown, fd, owner, group); }
