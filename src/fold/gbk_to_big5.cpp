// gchar2big5: GBK text to Big5, folded to half-width on the way.

#include "fold/fold_to_fit.h"
#include "fold/plain_block.h"
#include "sgbk/EncodingConvertor.h"

int EncodingConvertor::gchar2big5(const char* src, char* dest, int destlen, bool ifcase) {
  using namespace sgbk;
  constexpr Byte kLowestTrail = 0x80;
  const gchar_t* const table = pu16g2btbl;
  return foldToFit<Room::forAnyCharacter>(
      TerminatedInput(src), dest, destlen, kLowestTrail,
      [=](TerminatedInput& in, FoldedOutput& out, std::ptrdiff_t room) {
        return takePlainRun<Yen::dollar, Markup::folded>(
            in, out, room, ifcase, [table](gchar_t folded) {
              // Without the jump that a condition becomes.
              const unsigned isAscii = 0u - (folded < 0x80);
              return static_cast<gchar_t>((folded & isAscii) | (table[folded] & ~isAscii));
            });
      },
      [=](TerminatedInput& in, FoldedOutput& out) {
        // The pair as read is looked up, so other alphabets keep their case.
        foldNext<SpaceTab::merged, Yen::dollar>(
            in, out, ifcase, [table](gchar_t pindex, gchar_t) { return table[pindex]; });
      });
}
