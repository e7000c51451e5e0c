// What counts as a word when text is cut is asked of the C library, which goes by the locale. Its
// answer is stood in for here: locales with letters above 7F are not installed everywhere.

#include <gtest/gtest.h>
#include <sgbk/EncodingConvertor.h>

#include <algorithm>
#include <string>

namespace {
bool hasLettersAbove7F = false;
int lowestAsked = 0;
}  // namespace

// Seen from the library, though tests hide their names.
extern "C" __attribute__((visibility("default"))) int isalnum(int c) noexcept {
  lowestAsked = std::min(lowestAsked, c);
  const int folded = c | 0x20;
  return (c >= '0' && c <= '9') || (folded >= 'a' && folded <= 'z') ||
         (hasLettersAbove7F && c > 0x7F);
}

TEST(Locale, TellsWhatACutWordIs) {
  ASSERT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  std::string text;
  for (int i = 0; i < 20; ++i) text += "\xB0\xA1";
  const int size = static_cast<int>(text.size());
  char dest[30];
  for (const bool above : {false, true}) {
    hasLettersAbove7F = above;
    // 24 bytes stay and the dots; then 16 of them go as the end of a word.
    const int expected = above ? 11 : 27;
    EXPECT_EQ(sbc2dbc(text.c_str(), dest, sizeof dest, false), expected);
    EXPECT_EQ(sbc2dbc(text.data(), size, dest, sizeof dest, false), expected);
    auto& converter = *EncodingConvertor::getInstance();
    EXPECT_EQ(converter.gchar2big5(text.c_str(), dest, sizeof dest, false), expected);
  }
  EXPECT_EQ(lowestAsked, 0);  // isalnum takes bytes without sign
  EncodingConvertor::clear();
}
