// Buffers beside a page without access, so that one byte too many ends the test run.

#ifndef SGBK_TESTS_GUARDED_BUFFER_H
#define SGBK_TESTS_GUARDED_BUFFER_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

namespace sgbk_test {

// For the whole run; reused for buffers of any size up to `most`, a multiple of a page.
class GuardedBuffer {
 public:
  explicit GuardedBuffer(std::size_t most) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const base =
        mmap(nullptr, page + most + page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    begin_ = static_cast<char*>(base) + page;
    end_ = begin_ + most;
    if (base == MAP_FAILED || mprotect(begin_, most, PROT_READ | PROT_WRITE) != 0) std::abort();
  }

  // Room for `size` bytes behind the first page or before the second one.
  char* room(std::size_t size, bool isAtFirst = false) const {
    return isAtFirst ? begin_ : end_ - size;
  }

 private:
  char* begin_;
  char* end_;
};

}  // namespace sgbk_test

#endif
