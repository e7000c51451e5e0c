// Things that a process makes once, without a lock: a lock held by another thread would stay held
// in the child of a fork. Two threads may both make one; the first to be ready is kept.

#ifndef SGBK_TEXT_MADE_ONCE_H
#define SGBK_TEXT_MADE_ONCE_H

#include <atomic>
#include <memory>

namespace sgbk::text {

// The one T of the process whose member `key` equals the key; the one T where there is no key.
template <class T, class... Key>
const T& madeOnce(const Key&... key) {
  struct Node {
    const T made;
    const Node* next;
  };
  static std::atomic<const Node*> newest;
  const Node* first = newest.load(std::memory_order_acquire);
  std::unique_ptr<Node> mine;
  for (;;) {
    for (const Node* node = first; node != nullptr; node = node->next) {
      if ((... && (node->made.key == key))) return node->made;
    }
    if (mine == nullptr) mine.reset(new Node{T(key...), nullptr});
    mine->next = first;
    if (newest.compare_exchange_weak(first, mine.get(), std::memory_order_acq_rel)) {
      return mine.release()->made;
    }
  }
}

}  // namespace sgbk::text

#endif
