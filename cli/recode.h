// The C library's converter, for what is not the library's matter: the terminal's encoding, and
// what a code looks like in UTF-8.

#ifndef SGBK_CLI_RECODE_H
#define SGBK_CLI_RECODE_H

#include <iconv.h>

#include <optional>
#include <string>
#include <string_view>

namespace cli {

class Recoder {
 public:
  // Throws std::runtime_error when the C library does not know one of the names.
  Recoder(const char* to, const char* from);
  ~Recoder() { iconv_close(converter_); }
  Recoder(const Recoder&) = delete;
  Recoder& operator=(const Recoder&) = delete;

  // Nothing when `text` is not valid or holds a character that the other encoding lacks.
  std::optional<std::string> operator()(std::string_view text) const;

 private:
  iconv_t converter_;
};

}  // namespace cli

#endif
