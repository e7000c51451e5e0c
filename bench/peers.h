// The general tools that the library is measured against, each called in this process.

#ifndef SGBK_BENCH_PEERS_H
#define SGBK_BENCH_PEERS_H

#include <iconv.h>
#include <unicode/ucnv.h>
#include <unicode/utrans.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace sgbk_bench {

// Each converts all of `in` into `out`, throws when it cannot, and returns the bytes written.

class IconvConverter {
 public:
  IconvConverter(const std::string& from, const std::string& to);
  ~IconvConverter() { iconv_close(descriptor_); }
  IconvConverter(const IconvConverter&) = delete;
  IconvConverter& operator=(const IconvConverter&) = delete;
  std::size_t operator()(std::span<const char> in, std::span<char> out) const;

 private:
  iconv_t descriptor_;
};

class IcuConverter {
 public:
  IcuConverter(const char* from, const char* to);
  std::size_t operator()(std::span<const char> in, std::span<char> out) const;

 private:
  struct Close {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
  };
  using Converter = std::unique_ptr<UConverter, Close>;
  Converter from_;
  Converter to_;
};

// Full-width to half-width, UTF-16 to UTF-16.
class IcuFolder {
 public:
  IcuFolder();
  std::size_t operator()(std::span<const char> in, std::span<char> out) const;

 private:
  struct Close {
    void operator()(UTransliterator* transliterator) const { utrans_close(transliterator); }
  };
  std::unique_ptr<UTransliterator, Close> transliterator_;
};

// Big5 to simplified GBK, as it would be put together from general tools: iconv to UTF-8, OpenCC
// to simplified characters, iconv to GBK.
class Pipeline {
 public:
  Pipeline();
  ~Pipeline();
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;
  std::size_t operator()(std::span<const char> in, std::span<char> out);

 private:
  IconvConverter toUtf8_;
  IconvConverter toGbk_;
  void* opencc_;
  std::string utf8_;
};

// For texts, not for measuring: leaves out what `to` lacks.
std::string recode(const std::string& to, const std::string& from, const std::string& text);

}  // namespace sgbk_bench

#endif
