// From the input's encoding to GBK, with an account of what is lost on the way.

#ifndef SGBK_CLI_DECODER_H
#define SGBK_CLI_DECODER_H

#include <memory>
#include <string>
#include <string_view>

#include "encodings.h"
#include "loss_report.h"
#include "sgbk/EncodingConvertor.h"

namespace cli {

// lines  GBK text, ASCII in one byte. What stands between two line ends (LF or CR) is converted as
// by
//        a library call of its own, so that no line end is ever lost and lines can be dealt out to
//        any number of processes. A
//        code that is no GBK character does not come out: it is a blank.
// wide   What one library call makes of the whole input, byte for byte (but for four-byte UTF-8,
//        see decode_utf8.cpp).
enum class Form { lines, wide };

// Carries over what a piece must know of the one before.
class Decoder {
 public:
  virtual ~Decoder() = default;

  // Appends the text of `in` to `out`.
  // ended    nothing follows. Otherwise a character whose end is not there yet is left
  // Returns  the bytes used; all of them when `ended`
  virtual std::size_t decode(std::string_view in, bool ended, std::string& out,
                             LossReport& losses) = 0;
};

// simplify  may be false only for gbk and hz; the other tables simplify by themselves
std::unique_ptr<Decoder> makeDecoder(EncodingConvertor& converter, Source source, Form form,
                                     bool simplify);

std::unique_ptr<Decoder> makePairDecoder(EncodingConvertor&, Source, Form, bool simplify);
std::unique_ptr<Decoder> makeUtf8Decoder(EncodingConvertor&, Form);
std::unique_ptr<Decoder> makeUcs2Decoder(EncodingConvertor&, Source, Form);
std::unique_ptr<Decoder> makeHzDecoder(EncodingConvertor&, Form, bool simplify);

}  // namespace cli

#endif
