// gchar2big5: GBK text to Big5, folded to half-width on the way.

#include "fold/fold_to_fit.h"
#include "sgbk/EncodingConvertor.h"

int EncodingConvertor::gchar2big5(const char* src, char* dest, int destlen, bool ifcase) {
  using namespace sgbk;
  constexpr Byte kLowestTrail = 0x80;
  const gchar_t* const table = pu16g2btbl;
  const auto noRun = [](TerminatedInput&, FoldedOutput&, std::ptrdiff_t) { return false; };
  return foldToFit<Room::forAnyCharacter>(
      TerminatedInput(src), dest, destlen, kLowestTrail, noRun,
      [=](TerminatedInput& in, FoldedOutput& out) {
        // The pair as read is looked up, so other alphabets keep their case.
        foldNext<SpaceTab::merged, Yen::dollar>(
            in, out, ifcase, [table](gchar_t pindex, gchar_t) { return table[pindex]; });
      });
}
