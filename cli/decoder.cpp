#include "decoder.h"

#include <stdexcept>

namespace cli {

std::unique_ptr<Decoder> makeDecoder(EncodingConvertor& converter, Source source, Form form,
                                     bool simplify) {
  switch (source) {
    case Source::big5:
    case Source::gbk: return makePairDecoder(converter, source, form, simplify);
    case Source::utf8: return makeUtf8Decoder(converter, form);
    case Source::ucs2le:
    case Source::ucs2be: return makeUcs2Decoder(converter, source, form);
    case Source::hz: return makeHzDecoder(converter, form, simplify);
    case Source::automatic:
    case Source::ucs2: break;
  }
  throw std::logic_error("the encoding must be known before the text is decoded");
}

}  // namespace cli
