// The text engine for C++, from C++11 on: a converter that closes itself, and a text in one call.

#ifndef SGBK_TEXT_HPP
#define SGBK_TEXT_HPP

#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "text.h"

namespace sgbk {

// What a call of the C interface resulted in, and the text that it gave, as it does under "strict".
struct Error : std::runtime_error {
  Error(sgbk_result why, const std::string& sentence, const std::string& before = std::string())
      : std::runtime_error(sentence), result(why), text(before) {}

  sgbk_result result;
  std::string text;
};

// Everything throws Error, or std::bad_alloc. get() is for the rest of the C interface.
class Converter {
 public:
  Converter(const std::string& from, const std::string& to) : c_(sgbk_open(from.c_str(), to.c_str())) {
    if (c_ != nullptr) return;
    const bool isSource = sgbk_source_name(from.c_str()) != nullptr;
    if (isSource && sgbk_target_name(to.c_str()) != nullptr) throw std::bad_alloc();
    throw Error(SGBK_USAGE, isSource ? "unknown target: " + to : "unknown source: " + from);
  }
  ~Converter() { sgbk_close(c_); }
  Converter(Converter&& other) noexcept : c_(other.c_) { other.c_ = nullptr; }
  Converter& operator=(Converter other) noexcept {
    std::swap(c_, other.c_);
    return *this;
  }

  // value  null where the option takes none
  Converter& set(const std::string& option, const char* value = nullptr) {
    check(sgbk_set(c_, option.c_str(), value));
    return *this;
  }

  // What becomes of the next piece of input, of `size` bytes.
  std::string convert(const char* in, std::size_t size, bool last) {
    const char* out;
    std::size_t length;
    const sgbk_result result = sgbk_convert(c_, in, size, last, &out, &length);
    const std::string text(out, length);
    check(result, text);
    return text;
  }

  sgbk_converter* get() const noexcept { return c_; }

 private:
  void check(sgbk_result result, const std::string& text = std::string()) const {
    if (result == SGBK_NO_MEMORY) throw std::bad_alloc();
    if (result != SGBK_OK) throw Error(result, sgbk_error(c_), text);
  }

  sgbk_converter* c_;
};

// A whole text.
inline std::string convert(const std::string& text, const std::string& from, const std::string& to) {
  return Converter(from, to).convert(text.data(), text.size(), true);
}

}  // namespace sgbk

#endif
