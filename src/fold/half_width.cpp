// sbc2dbc: GBK text to half-width.

#include "fold/fold_to_fit.h"
#include "fold/plain_block.h"
#include "sgbk/EncodingConvertor.h"

namespace {

constexpr sgbk::Byte kLowestTrail = 0x81;

template <class Input>
int toHalfWidth(Input input, char* dest, int destlen, bool ifcase) {
  using namespace sgbk;
  return foldToFit<Room::forThisCharacter>(
      input, dest, destlen, kLowestTrail,
      [ifcase](Input& in, FoldedOutput& out, std::ptrdiff_t room) {
        return takePlainRun<Yen::kept, Markup::folded>(in, out, room, ifcase,
                                                       [](gchar_t folded) { return folded; });
      },
      [ifcase](Input& in, FoldedOutput& out) {
        foldNext<SpaceTab::merged, Yen::kept>(in, out, ifcase,
                                              [](gchar_t, gchar_t folded) { return folded; });
      });
}

}  // namespace

int sbc2dbc(const char* src, int srclen, char* dest, int destsize, bool ifcase) {
  const auto length = static_cast<std::size_t>(srclen > 0 ? srclen : 0);
  return toHalfWidth(sgbk::CountedInput(src, length), dest, destsize, ifcase);
}

int sbc2dbc(const char* src, char* dest, int destlen, bool ifcase) {
  return toHalfWidth(sgbk::TerminatedInput(src), dest, destlen, ifcase);
}

int EncodingConvertor::sbc2dbc(const char* src, char* dest, int destlen, bool ifcase) {
  return ::sbc2dbc(src, dest, destlen, ifcase);
}
