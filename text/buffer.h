// Bytes that are appended to: a string whose room need not be filled first.

#ifndef SGBK_TEXT_BUFFER_H
#define SGBK_TEXT_BUFFER_H

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>

namespace sgbk::text {

class Buffer {
 public:
  // Makes room for `size` bytes more and returns where they begin; setEnd() says what was written.
  // A few bytes after the end may be read, and written, at any time.
  char* room(std::size_t size) {
    if (capacity_ - size_ < size + kSlack) grow(size + kSlack);
    return bytes_.get() + size_;
  }
  void setEnd(const char* end) { size_ = static_cast<std::size_t>(end - bytes_.get()); }

  void append(std::string_view text) {
    if (text.empty()) return;
    std::memcpy(room(text.size()), text.data(), text.size());
    size_ += text.size();
  }

  void clear() { size_ = 0; }
  void removePrefix(std::size_t size) {
    if (size == 0) return;
    size_ -= size;
    if (size_ != 0) std::memmove(bytes_.get(), bytes_.get() + size, size_);
  }

  std::size_t size() const { return size_; }
  std::string_view view() const { return {bytes_.get(), size_}; }

 private:
  static constexpr std::size_t kSlack = 8;

  void grow(std::size_t size) {
    const std::size_t capacity = std::max(size_ + size, 2 * capacity_);
    auto bytes = std::make_unique_for_overwrite<char[]>(capacity);
    if (size_ != 0) std::memcpy(bytes.get(), bytes_.get(), size_);
    bytes_ = std::move(bytes);
    capacity_ = capacity;
  }

  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace sgbk::text

#endif
