// The converter's life: creation, failure to create, destruction, and many threads on one object;
// and what it asks of the C library. That is stood in for: locales with letters above 7F are not
// installed everywhere.

#include <gtest/gtest.h>
#include <sgbk/EncodingConvertor.h>

#include <algorithm>
#include <thread>

#include "support/allocation.h"
#include "support/operations.h"

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

namespace sgbk_test {
namespace {

TEST(Converter, LivesFromInitializeInstanceToClear) {
  EncodingConvertor::clear();
  allocationsLeft = 1;
  EXPECT_EQ(EncodingConvertor::initializeInstance("anywhere"), -1);
  EXPECT_EQ(EncodingConvertor::getInstance(), nullptr);
  allocationsLeft = -1;
  const long before = alive;
  EXPECT_EQ(EncodingConvertor::initializeInstance("anywhere"), 0);
  EncodingConvertor* const converter = EncodingConvertor::getInstance();
  EXPECT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  EXPECT_EQ(EncodingConvertor::getInstance(), converter);
  EXPECT_EQ(alive, before + 1);
  EncodingConvertor::clear();
  EXPECT_EQ(EncodingConvertor::getInstance(), nullptr);
  EncodingConvertor::clear();
  EXPECT_EQ(alive, before);
}

TEST(Converter, WidensByItsTableAndNarrowsBack) {
  ASSERT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  int narrow = 0;
  for (unsigned unit = 0; unit < 65536; ++unit) {
    const auto code = static_cast<gchar_t>(unit);
    ASSERT_EQ(EncodingConvertor::getInstance()->getucgvalue(code), tables().unicode[code]);
    const char c = sbcchar2dbc(code);
    EXPECT_TRUE(c == 0 || tables().unicode[static_cast<unsigned char>(c)] == code) << code;
    narrow += c != 0;
  }
  EXPECT_EQ(narrow, 0x7E - 0x21 + 1);
}

// Half of the threads make the converter, the others wait for it; all convert at once.
TEST(Converter, ServesManyThreadsWhileItIsMade) {
  const auto convertAll = [](unsigned seed) {
    if (seed % 2 == 0) EncodingConvertor::initializeInstance(nullptr);
    while (EncodingConvertor::getInstance() == nullptr) std::this_thread::yield();
    std::mt19937 random(seed);
    for (const Operation& operation : operations()) {
      std::string text;
      for (int k = 0; k < 2000; ++k) text += operation.randomCharacter(random);
      EXPECT_EQ(disagreement(operation, text, operation.enough(text.size())), "");
      EXPECT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
    }
  };
  convertAll(0);
  EncodingConvertor::clear();
  const long before = alive;
  for (int round = 0; round < 5; ++round) {
    {
      std::vector<std::jthread> threads;
      for (unsigned i = 0; i < 8; ++i) threads.emplace_back(convertAll, i);
    }
    EncodingConvertor::clear();
    EXPECT_EQ(alive, before);
  }
}

TEST(Locale, TellsWhatACutWordIs) {
  ASSERT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  const std::string text(40, '\xC4');
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

}  // namespace
}  // namespace sgbk_test
