// Buffers that end at a page without access, so that one byte too many ends the test run.

#ifndef SGBK_TESTS_GUARDED_BUFFER_H
#define SGBK_TESTS_GUARDED_BUFFER_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <span>

namespace sgbk_test {

// Reused for buffers of any size up to the one it was made for.
class GuardedBuffer {
 public:
  explicit GuardedBuffer(std::size_t most) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    size_ = (most + page - 1) / page * page + page;
    base_ = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (base_ == MAP_FAILED) std::abort();
    end_ = static_cast<char*>(base_) + size_ - page;
    if (mprotect(end_, page, PROT_NONE) != 0) std::abort();
  }
  ~GuardedBuffer() { munmap(base_, size_); }
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  // The last `size` bytes before the protected page.
  char* last(std::size_t size) const { return end_ - size; }
  char* holding(std::span<const char> text) const {
    if (!text.empty()) std::memcpy(last(text.size()), text.data(), text.size());
    return last(text.size());
  }

 private:
  void* base_;
  std::size_t size_;
  char* end_;
};

}  // namespace sgbk_test

#endif
