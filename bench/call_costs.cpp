// What a call costs beside its characters, and what two threads on one converter gain.

#include <sgbk/EncodingConvertor.h>

#include <algorithm>
#include <cstdint>

#include "rows.h"

namespace sgbk_bench {
namespace {

EncodingConvertor& converter() { return *EncodingConvertor::getInstance(); }

// A text converted in pieces of every size.
template <class LengthAt, class Convert>
void addPieces(const char* operation, const Text& text, LengthAt lengthAt, Convert convert) {
  for (const std::size_t size : {16u, 100u, 1000u, 65536u}) {
    addRow(std::string("calls/") + operation + '/' + std::to_string(size), text.characters,
           2 * size + 4, [convert, list = pieces(text.bytes, size, lengthAt)](std::span<char> out) {
             std::size_t written = 0;
             for (const std::string& piece : list) {
               written += static_cast<std::size_t>(convert(piece, out));
             }
             return written;
           });
  }
}

// Instructions that share nothing with another thread.
std::uint32_t scrambled(std::uint32_t x, int rounds) {
  for (int i = 0; i < rounds; ++i) {
    x ^= x << 13;
    x ^= x >> 17;
    x ^= x << 5;
  }
  return x;
}

}  // namespace

void addCallCosts(std::size_t limit) {
  using E = EncodingConvertor;
  using Bytes = const std::string&;
  using Out = std::span<char>;
  const Source source(Kind::prose, Script::traditional, limit);
  const Text big5 = source.in("BIG5");
  const Text gbk = source.in("GBK");
  const Text utf8 = source.in("UTF-8");
  const Text utf16 = source.in("UTF-16LE");
  const auto units = [](std::size_t) -> std::size_t { return 2; };
  const auto utf8Groups = [&text = utf8.bytes](std::size_t at) -> std::size_t {
    const auto b = static_cast<unsigned char>(text[at]);
    return b < 0x80 ? 1 : b < 0xE0 ? 2 : 3;
  };
  const auto stream = [](auto member) {
    return [member](Bytes in, Out out) {
      return (converter().*member)(in.data(), static_cast<int>(in.size()), out.data(),
                                   static_cast<int>(out.size()));
    };
  };
  addPieces("b52sgbk", big5, lengthsOfPairs(big5.bytes), stream(&E::b52sgbk));
  addPieces("t2sgbk", gbk, lengthsOfPairs(gbk.bytes), stream(&E::t2sgbk));
  addPieces("utf82sgbk", utf8, utf8Groups, stream(&E::utf82sgbk));
  addPieces("uc2sgbk_DB", utf16, units, [](Bytes in, Out out) {
    return converter().uc2sgbk_DB(reinterpret_cast<const unsigned short*>(in.data()),
                                  static_cast<int>(in.size() / 2), out.data(),
                                  static_cast<int>(out.size()));
  });
  addPieces("t2sgchar", gbk, lengthsOfPairs(gbk.bytes), [](Bytes in, Out out) {
    return converter().t2sgchar(in.c_str(), reinterpret_cast<gchar_t*>(out.data()),
                                static_cast<int>(out.size() / 2), true);
  });
  addPieces("sbc2dbc", gbk, lengthsOfPairs(gbk.bytes), [](Bytes in, Out out) {
    return sbc2dbc(in.data(), static_cast<int>(in.size()), out.data(), static_cast<int>(out.size()),
                   true);
  });
}

void addThreads(std::size_t limit) {
  const Text big5 = Source(Kind::prose, Script::traditional, limit).in("BIG5");
  for (const int threads : {1, 2}) {
    addRow("threads/b52sgbk", big5.characters, 2 * big5.bytes.size(),
           [big5](std::span<char> out) {
             return static_cast<std::size_t>(
                 converter().b52sgbk(big5.bytes.data(), static_cast<int>(big5.bytes.size()),
                                     out.data(), static_cast<int>(out.size())));
           })
        ->Threads(threads)
        ->UseRealTime();
    addRow("threads/independent instructions", big5.characters, 1,
           [rounds = static_cast<int>(big5.characters)](std::span<char>) {
             return std::max<std::size_t>(scrambled(1, rounds), 1);
           })
        ->Threads(threads)
        ->UseRealTime();
  }
}

}  // namespace sgbk_bench
