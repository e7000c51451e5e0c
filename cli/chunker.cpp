#include "chunker.h"

#include <algorithm>
#include <cstring>

namespace cli {

Chunker::Chunker(Read read, std::size_t capacity)
    : read_(std::move(read)),
      capacity_(capacity),
      buffer_(std::make_unique_for_overwrite<char[]>(capacity)) {}

void Chunker::setCut(Source source, Cut cut) {
  lineEnds_ = LineEnds(source);
  cut_ = cut;
}

// The size of the piece that the bytes read so far make, 0 when more are needed.
std::size_t Chunker::pieceSize() {
  const std::string_view text = pending();
  std::size_t size = 0;
  switch (cut_) {
    case Cut::anywhere: size = text.size(); break;
    case Cut::lines: size = lineEnds_.behindLast(text, searched_); break;
    case Cut::oneLine: size = lineEnds_.behindFirst(text, std::max(heldBack_, searched_)); break;
  }
  if (size == 0) searched_ = text.size();
  if (size <= heldBack_) size = isFull() ? text.size() : 0;
  return size;
}

bool Chunker::next() {
  for (;;) {
    if (const std::size_t size = pieceSize(); size != 0) {
      piece_ = pending().substr(0, size);
      isLast_ = atEnd_ && size == pending().size();
      return true;
    }
    if (atEnd_) {
      if (isLast_) return false;
      piece_ = pending();
      isLast_ = true;
      return true;
    }
    fill();
  }
}

void Chunker::use(std::size_t size) {
  begin_ += size;
  heldBack_ = piece_.size() - size;
  searched_ = 0;
}

std::string_view Chunker::lookAhead(std::size_t size) {
  while (pending().size() < size && !atEnd_) fill();
  return pending();
}

void Chunker::fill() {
  if (begin_ != 0) {
    std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  const std::size_t size = read_(buffer_.get() + end_, capacity_ - end_);
  end_ += size;
  atEnd_ = size == 0;
}

}  // namespace cli
