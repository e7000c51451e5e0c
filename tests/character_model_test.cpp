// The constants and predicates over all 65,536 units.

#include <gtest/gtest.h>
#include <sgbk/EncodingConvertor.h>

#include <map>

#include "support/hex.h"

namespace sgbk_test {
namespace {

// By the tables of docs/character-model.md; the number behind the sign where there is one, else 1.
std::map<std::string, std::map<unsigned, int>> documented() {
  std::map<std::string, std::map<unsigned, int>> all;
  for (const auto& cells : rowsBelow("| function | pairs |")) {
    std::istringstream ranges(quoted(cells.at(1)));
    for (std::string range; ranges >> range;) {
      unsigned lead, trail, lastLead, lastTrail, change = 1;
      const int found = std::sscanf(range.c_str(), "%2x%2x-%2x%2x%x", &lead, &trail, &lastLead,
                                    &lastTrail, &change);
      if (found == 2) lastLead = lead, lastTrail = trail;
      for (unsigned b1 = lead; b1 <= lastLead; ++b1) {
        for (unsigned b2 = trail; b2 <= lastTrail; ++b2) {
          all[quoted(cells.at(0))][b1 + 256 * b2] = static_cast<int>(change);
        }
      }
    }
  }
  return all;
}

TEST(CharacterModel, FunctionsDoWhatTheirTablesSay) {
  auto all = documented();
  ASSERT_EQ(all.size(), 7u);
  for (unsigned unit = 0; unit < 65536; ++unit) {
    const auto wc = static_cast<gchar_t>(unit);
    const auto told = [&](const char* function) {
      const auto& pairs = all.at(function);
      return pairs.contains(unit) ? pairs.at(unit) : 0;
    };
    const bool digitOrLetter = told("isSBCDigit") + told("isSBCLetter") != 0;
    const bool blank = told("isGBKUndefinedChar") != 0 || wc == CHINESE_SPACE_CHAR;
    ASSERT_EQ(isGBKUndefinedChar(wc), told("isGBKUndefinedChar")) << std::hex << wc;
    ASSERT_EQ(isgcharspace(wc), blank) << std::hex << wc;
    ASSERT_EQ(isSBCDigit(wc), told("isSBCDigit")) << std::hex << wc;
    ASSERT_EQ(isSBCLetter(wc), told("isSBCLetter")) << std::hex << wc;
    ASSERT_EQ(isShapeChar(wc), told("isShapeChar")) << std::hex << wc;
    ASSERT_EQ(isGraphChar(wc), !digitOrLetter && (blank || told("isGraphChar"))) << std::hex << wc;
    ASSERT_EQ(toLowerCase(wc), wc + 256 * told("toLowerCase")) << std::hex << wc;
    ASSERT_EQ(EncodingConvertor::gtoLowercase(wc), toLowerCase(wc)) << std::hex << wc;
    ASSERT_EQ(EncodingConvertor::gtoUppercase(wc), wc + 256 * told("gtoUppercase")) << wc;
  }
}

// Callers may compare text with these bytes, and derive tables from the predicates.
static_assert(RETURN_CONVERSION_CHAR == 0xA3FD && CHINESE_SPACE_CHAR == 0xA1A1);
static_assert(SPACE_CONVERSION_CHAR == 0xA0A1 && CHINESE_SPACE_CHAR2 == 0xA0A3);
static_assert(DOT_CONVERSION_CHAR == 0xAEA3 && TAB_CONVERSION_CHAR == 0x0920);
static_assert(DEFAULT_ANSI_CONVERSION_CHAR == 0xFFFF && DESCRIPTION_CONTENT_SEPARATOR == 0xFFFE);
static_assert(FIRST_DBC == 33 && LAST_DBC == 126 && sizeof(gchar_t) == 2);
static_assert(isgcharspace(RETURN_CONVERSION_CHAR) && toLowerCase(0xC1A3) == 0xE1A3);

}  // namespace
}  // namespace sgbk_test
