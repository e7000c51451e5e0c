// The constants and predicates over all 65,536 units.

#include <gtest/gtest.h>
#include <sgbk/EncodingConvertor.h>

namespace {

bool in(int b, int first, int last) { return b >= first && b <= last; }

// The rows of undefined codes as a list.
bool isInUndefinedRow(int b1, int b2) {
  const struct {
    int leadFirst, leadLast, trailFirst, trailLast;
  } rows[] = {{0xAA, 0xAF, 0xA1, 0xFE}, {0xF8, 0xFE, 0xA1, 0xFE}, {0xA1, 0xA7, 0x40, 0x7E},
              {0xA1, 0xA7, 0x80, 0xA0}, {0xA2, 0xA2, 0xAB, 0xB0}, {0xA2, 0xA2, 0xE3, 0xE4},
              {0xA2, 0xA2, 0xEF, 0xF0}, {0xA2, 0xA2, 0xFD, 0xFE}, {0xA4, 0xA4, 0xF4, 0xFE},
              {0xA5, 0xA5, 0xF7, 0xFE}, {0xA6, 0xA6, 0xB9, 0xC0}, {0xA6, 0xA6, 0xD9, 0xDF},
              {0xA6, 0xA6, 0xEC, 0xED}, {0xA6, 0xA6, 0xF3, 0xF3}, {0xA6, 0xA6, 0xF6, 0xFE},
              {0xA7, 0xA7, 0xC2, 0xD0}, {0xA7, 0xA7, 0xF2, 0xFE}, {0xA8, 0xA8, 0x96, 0xA0},
              {0xA8, 0xA8, 0xC1, 0xC4}, {0xA8, 0xA8, 0xEA, 0xFE}, {0xA9, 0xA9, 0x58, 0x58},
              {0xA9, 0xA9, 0x5B, 0x5B}, {0xA9, 0xA9, 0x5D, 0x5F}, {0xA9, 0xA9, 0x97, 0xA3},
              {0xA9, 0xA9, 0xF5, 0xFE}};
  for (const auto& row : rows) {
    if (in(b1, row.leadFirst, row.leadLast) && in(b2, row.trailFirst, row.trailLast)) return true;
  }
  return false;
}

int loweredTrail(int b1, int b2) {
  switch (b1) {
    case 0xA3: return in(b2, 0xC1, 0xDA) ? b2 + 0x20 : b2;
    case 0xA6: return in(b2, 0xA1, 0xB8) ? b2 + 0x20 : b2;
    case 0xA7: return in(b2, 0xA1, 0xC1) ? b2 + 0x30 : b2;
    case 0xA2: return in(b2, 0xF1, 0xFA) ? b2 - 0x50 : b2;
    case 0xA4:
    case 0xA5: return in(b2, 0xA2, 0xAA) && b2 % 2 == 0 ? b2 - 1 : b2;
    case 0xAA: return in(b2, 0xDC, 0xDE) ? b2 + 0x20 : b2;
    case 0xAB: return in(b2, 0xC1, 0xDE) ? b2 + 0x20 : b2;
    default: return b2;
  }
}

bool isShape(int b1, int b2) {
  return (b1 == 0xA1 && (in(b2, 0xEE, 0xF9) || b2 == 0xFE)) || (b1 == 0xA6 && in(b2, 0xE0, 0xF5)) ||
         (b1 == 0xA8 && in(b2, 0x54, 0x90)) || (b1 == 0xA9 && in(b2, 0xA4, 0xEF));
}

TEST(CharacterModel, PredicatesHoldForExactlyTheirRows) {
  for (int b1 = 0; b1 < 256; ++b1) {
    for (int b2 = 0; b2 < 256; ++b2) {
      const auto wc = static_cast<gchar_t>(b1 + 256 * b2);
      const bool undefined = isInUndefinedRow(b1, b2);
      const bool blank = undefined || wc == 0xA1A1;
      const bool digit = b1 == 0xA3 && in(b2, 0xB0, 0xB9);
      const bool letter = b1 == 0xA3 && (in(b2, 0xC1, 0xDA) || in(b2, 0xE1, 0xFA));
      const bool symbol =
          (in(b1, 0xA1, 0xA9) && in(b2, 0xA1, 0xFE)) || (in(b1, 0xA8, 0xA9) && in(b2, 0x40, 0xA0));
      const auto lowered = static_cast<gchar_t>(b1 + 256 * loweredTrail(b1, b2));
      ASSERT_EQ(isGBKUndefinedChar(wc), undefined) << std::hex << wc;
      ASSERT_EQ(isgcharspace(wc), blank) << std::hex << wc;
      ASSERT_EQ(isSBCDigit(wc), digit) << std::hex << wc;
      ASSERT_EQ(isSBCLetter(wc), letter) << std::hex << wc;
      ASSERT_EQ(isShapeChar(wc), isShape(b1, b2)) << std::hex << wc;
      ASSERT_EQ(isGraphChar(wc), !digit && !letter && (blank || symbol)) << std::hex << wc;
      ASSERT_EQ(toLowerCase(wc), lowered) << std::hex << wc;
      ASSERT_EQ(EncodingConvertor::gtoLowercase(wc), lowered) << std::hex << wc;
      const bool small = b1 == 0xA3 && in(b2, 0xE1, 0xFA);
      ASSERT_EQ(EncodingConvertor::gtoUppercase(wc), small ? wc - 0x2000 : wc) << std::hex << wc;
    }
  }
}

// Callers may compare text with these bytes, and derive tables from the predicates.
static_assert(RETURN_CONVERSION_CHAR == 0xA3FD && CHINESE_SPACE_CHAR == 0xA1A1);
static_assert(SPACE_CONVERSION_CHAR == 0xA0A1 && CHINESE_SPACE_CHAR2 == 0xA0A3);
static_assert(DOT_CONVERSION_CHAR == 0xAEA3 && TAB_CONVERSION_CHAR == 0x0920);
static_assert(DEFAULT_ANSI_CONVERSION_CHAR == 0xFFFF && DESCRIPTION_CONTENT_SEPARATOR == 0xFFFE);
static_assert(FIRST_DBC == 33 && LAST_DBC == 126 && sizeof(gchar_t) == 2);
static_assert(isgcharspace(RETURN_CONVERSION_CHAR) && toLowerCase(0xC1A3) == 0xE1A3);

TEST(CharacterModel, WideningAndNarrowingAreInverse) {
  ASSERT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  int narrow = 0;
  for (unsigned unit = 0; unit < 65536; ++unit) {
    const char c = sbcchar2dbc(static_cast<gchar_t>(unit));
    if (c == 0) continue;
    ++narrow;
    EXPECT_EQ(EncodingConvertor::getInstance()->getucgvalue(static_cast<unsigned char>(c)), unit);
  }
  EXPECT_EQ(narrow, 0x7E - 0x21 + 1);
}

}  // namespace
