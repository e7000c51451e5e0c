// Cuts an input of any length into pieces that can be converted one after the other.

#ifndef SGBK_CLI_CHUNKER_H
#define SGBK_CLI_CHUNKER_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

#include "line_ends.h"

namespace cli {

// What a piece holds: whatever has been read, all whole lines of it, or one line.
enum class Cut { anywhere, lines, oneLine };

class Chunker {
 public:
  // Puts up to `size` bytes at `to` and returns how many, 0 at the end of the input.
  using Read = std::function<std::size_t(char* to, std::size_t size)>;

  // The buffer, and with it the longest line that is seen as one; a longer one comes in parts.
  static constexpr std::size_t kCapacity = 1 << 18;

  explicit Chunker(Read read, std::size_t capacity = kCapacity);
  // To be called before next().
  void setCut(Source source, Cut cut);

  // Gets the next piece; false behind the last one, which may be empty. What use() left of a piece
  // comes again, with at least a byte more unless it is the last one.
  bool next();
  std::string_view piece() const { return piece_; }
  // True when the input ends behind the piece.
  bool isLast() const { return isLast_; }
  // Says how much of the piece was used.
  void use(std::size_t size);

  // Reads until `size` bytes are there or the input ends, and shows them without using them.
  std::string_view lookAhead(std::size_t size);

 private:
  std::string_view pending() const { return {buffer_.get() + begin_, end_ - begin_}; }
  std::size_t pieceSize();
  bool isFull() const { return end_ - begin_ == capacity_; }
  void fill();

  Read read_;
  const std::size_t capacity_;
  LineEnds lineEnds_{Source::utf8};
  Cut cut_ = Cut::anywhere;
  std::unique_ptr<char[]> buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::size_t heldBack_ = 0;  // of pending(): bytes that were in the last piece already
  std::size_t searched_ = 0;  // of pending(): bytes known to hold no line end
  bool atEnd_ = false;
  bool isLast_ = false;
  std::string_view piece_;
};

}  // namespace cli

#endif
