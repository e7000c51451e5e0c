#include "recode.h"

#include <cerrno>
#include <stdexcept>

namespace cli {

Recoder::Recoder(const char* to, const char* from) : converter_(iconv_open(to, from)) {
  if (converter_ == reinterpret_cast<iconv_t>(-1)) {
    throw std::runtime_error(std::string("the C library cannot convert ") + from + " to " + to);
  }
}

std::optional<std::string> Recoder::operator()(std::string_view text) const {
  iconv(converter_, nullptr, nullptr, nullptr, nullptr);
  std::string result;
  char* in = const_cast<char*>(text.data());
  std::size_t left = text.size();
  while (left != 0) {
    char part[256];
    char* out = part;
    std::size_t room = sizeof part;
    const std::size_t inexact = iconv(converter_, &in, &left, &out, &room);
    if (inexact == static_cast<std::size_t>(-1) && errno != E2BIG) return std::nullopt;
    if (inexact != 0 && inexact != static_cast<std::size_t>(-1)) return std::nullopt;
    result.append(part, sizeof part - room);
  }
  return result;
}

}  // namespace cli
