// Stands in for allocation in the whole program, the libraries included.

#ifndef SGBK_TESTS_ALLOCATION_H
#define SGBK_TESTS_ALLOCATION_H

#include <atomic>
#include <cstdlib>
#include <new>

namespace sgbk_test {
std::atomic<long> allocationsLeft = -1;  // of which the last one fails; below 0: as many as wanted
std::atomic<long> alive = 0;
}  // namespace sgbk_test

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (sgbk_test::allocationsLeft > 0) --sgbk_test::allocationsLeft;
  if (sgbk_test::allocationsLeft == 0) return nullptr;
  ++sgbk_test::alive;
  return std::malloc(size);
}
void* operator new(std::size_t size) {
  if (void* p = operator new(size, std::nothrow)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { sgbk_test::alive -= p != nullptr, std::free(p); }
void operator delete(void* p, std::size_t) noexcept { operator delete(p); }

#endif
