// Case and width of single characters, and case of arrays.

#include "core/half_width.h"
#include "sgbk/EncodingConvertor.h"

using sgbk::Byte;
using sgbk::leadOf;
using sgbk::trailOf;
using sgbk_detail::within;

namespace {

constexpr Byte kLatinRow = 0xA3;
constexpr unsigned kCaseDistance = 0x20 << 8;  // between the trail bytes of A and a

bool isLatinCapital(gchar_t c) { return leadOf(c) == kLatinRow && within(trailOf(c), 0xC1, 0xDA); }

bool isLatinSmall(gchar_t c) { return leadOf(c) == kLatinRow && within(trailOf(c), 0xE1, 0xFA); }

}  // namespace

gchar_t EncodingConvertor::gtoUppercase(gchar_t c) {
  return isLatinSmall(c) ? static_cast<gchar_t>(c - kCaseDistance) : c;
}

gchar_t EncodingConvertor::gtoLowercase(gchar_t c) { return toLowerCase(c); }

void EncodingConvertor::sbctoLowercase(gchar_t* pbuffer) { ::sbctoLowercase(pbuffer); }

void sbctoLowercase(gchar_t* pbuffer) {
  for (gchar_t* unit = pbuffer; leadOf(*unit) != 0; ++unit) {
    if (isLatinCapital(*unit)) *unit = static_cast<gchar_t>(*unit + kCaseDistance);
  }
}

char sbcchar2dbc(gchar_t gch) { return static_cast<char>(sgbk::halfWidth(gch)); }
