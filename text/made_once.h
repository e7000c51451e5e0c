// Things that a process makes once, without a lock: a lock held by another thread would stay held
// in the child of a fork. Two threads may both make one; the first to be ready is kept.

#ifndef SGBK_TEXT_MADE_ONCE_H
#define SGBK_TEXT_MADE_ONCE_H

#include <atomic>
#include <memory>

namespace sgbk::text {

// The one T of the process.
template <class T>
const T& madeOnce() {
  static std::atomic<const T*> slot;
  if (const T* const there = slot.load(std::memory_order_acquire)) return *there;
  auto made = std::make_unique<const T>();
  const T* first = nullptr;
  if (!slot.compare_exchange_strong(first, made.get(), std::memory_order_acq_rel)) return *first;
  return *made.release();
}

}  // namespace sgbk::text

#endif
