#include "peers.h"

#include <opencc/opencc.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace sgbk_bench {
namespace {

void check(UErrorCode status, const char* what) {
  if (U_FAILURE(status)) throw std::runtime_error(std::string(what) + u_errorName(status));
}

}  // namespace

IconvConverter::IconvConverter(const std::string& from, const std::string& to)
    : descriptor_(iconv_open(to.c_str(), from.c_str())) {
  if (descriptor_ == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("iconv_open " + from);
}

std::size_t IconvConverter::operator()(std::span<const char> in, std::span<char> out) const {
  char* src = const_cast<char*>(in.data());
  char* dest = out.data();
  std::size_t left = in.size();
  std::size_t room = out.size();
  if (iconv(descriptor_, &src, &left, &dest, &room) == static_cast<std::size_t>(-1)) {
    throw std::runtime_error("iconv stopped");
  }
  return out.size() - room;
}

IcuConverter::IcuConverter(const char* from, const char* to) {
  UErrorCode status = U_ZERO_ERROR;
  from_.reset(ucnv_open(from, &status));
  to_.reset(ucnv_open(to, &status));
  check(status, "ucnv_open ");
}

std::size_t IcuConverter::operator()(std::span<const char> in, std::span<char> out) const {
  UChar pivot[1024];
  UChar* pivotSource = pivot;
  UChar* pivotTarget = pivot;
  const char* src = in.data();
  char* dest = out.data();
  UErrorCode status = U_ZERO_ERROR;
  ucnv_convertEx(to_.get(), from_.get(), &dest, out.data() + out.size(), &src,
                 in.data() + in.size(), pivot, &pivotSource, &pivotTarget, std::end(pivot), true,
                 true, &status);
  check(status, "ucnv_convertEx ");
  return static_cast<std::size_t>(dest - out.data());
}

IcuFolder::IcuFolder() {
  constexpr UChar kName[] = u"Fullwidth-Halfwidth";
  UErrorCode status = U_ZERO_ERROR;
  transliterator_.reset(utrans_openU(kName, -1, UTRANS_FORWARD, nullptr, 0, nullptr, &status));
  check(status, "utrans_openU ");
}

std::size_t IcuFolder::operator()(std::span<const char> in, std::span<char> out) const {
  std::memcpy(out.data(), in.data(), in.size());
  auto length = static_cast<int32_t>(in.size() / 2);
  int32_t limit = length;
  UErrorCode status = U_ZERO_ERROR;
  utrans_transUChars(transliterator_.get(), reinterpret_cast<UChar*>(out.data()), &length,
                     static_cast<int32_t>(out.size() / 2), 0, &limit, &status);
  check(status, "utrans_transUChars ");
  return 2 * static_cast<std::size_t>(length);
}

Pipeline::Pipeline()
    : toUtf8_("BIG5", "UTF-8"),
      toGbk_("UTF-8", "GBK//TRANSLIT"),
      opencc_(opencc_open("tw2s.json")) {
  if (opencc_ == reinterpret_cast<opencc_t>(-1)) throw std::runtime_error(opencc_error());
}

Pipeline::~Pipeline() { opencc_close(opencc_); }

std::size_t Pipeline::operator()(std::span<const char> in, std::span<char> out) {
  utf8_.resize(2 * in.size());
  const std::size_t size = toUtf8_(in, utf8_);
  char* const simplified = opencc_convert_utf8(opencc_, utf8_.data(), size);
  if (simplified == nullptr) throw std::runtime_error(opencc_error());
  const std::size_t written = toGbk_({simplified, std::strlen(simplified)}, out);
  opencc_convert_utf8_free(simplified);
  return written;
}

std::string recode(const std::string& to, const std::string& from, const std::string& text) {
  const iconv_t descriptor = iconv_open((to + "//IGNORE").c_str(), from.c_str());
  if (descriptor == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("iconv_open " + to);
  std::string out(4 * text.size() + 16, '\0');
  char* src = const_cast<char*>(text.data());
  char* dest = out.data();
  std::size_t left = text.size();
  std::size_t room = out.size();
  // With what was left out iconv reports an error too, at the end.
  while (left > 0 && iconv(descriptor, &src, &left, &dest, &room) == static_cast<std::size_t>(-1)) {
    if (errno != EILSEQ) throw std::runtime_error("iconv to " + to);
  }
  iconv_close(descriptor);
  out.resize(out.size() - room);
  return out;
}

}  // namespace sgbk_bench
