// Buffers beside a page without access, so that one byte too many ends the test run.

#ifndef SGBK_TESTS_GUARDED_BUFFER_H
#define SGBK_TESTS_GUARDED_BUFFER_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

namespace sgbk_test {

// Reused for buffers of any size up to the one it was made for.
class GuardedBuffer {
 public:
  explicit GuardedBuffer(std::size_t most) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    most = (most + page - 1) / page * page;
    size_ = page + most + page;
    base_ = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (base_ == MAP_FAILED) std::abort();
    begin_ = static_cast<char*>(base_) + page;
    end_ = begin_ + most;
    if (mprotect(begin_, most, PROT_READ | PROT_WRITE) != 0) std::abort();
  }
  ~GuardedBuffer() { munmap(base_, size_); }
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  // The bytes behind the first page, and the last `size` bytes before the second one.
  char* first() const { return begin_; }
  char* last(std::size_t size) const { return end_ - size; }

 private:
  void* base_;
  std::size_t size_;
  char* begin_;
  char* end_;
};

}  // namespace sgbk_test

#endif
