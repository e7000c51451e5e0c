// Prefix and suffix tests on byte strings.

#include <cstring>

#include "sgbk/support.h"

bool startsWith(const char* src, const char* prefix) {
  if (src == nullptr || prefix == nullptr) return false;
  while (*prefix != '\0' && *src == *prefix) {
    ++src;
    ++prefix;
  }
  return *prefix == '\0';
}

bool endsWith(const char* src, const char* postfix) {
  if (src == nullptr || postfix == nullptr) return false;
  const size_t length = std::strlen(src);
  const size_t wanted = std::strlen(postfix);
  return wanted <= length && std::memcmp(src + (length - wanted), postfix, wanted) == 0;
}
