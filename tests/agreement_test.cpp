// Every conversion agrees with its obvious twin, in its result and in every byte of the
// destination, and stays inside its buffers, on exhaustive and random input.

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/hex.h"
#include "support/operations.h"

namespace sgbk_test {
namespace {

class Agreement : public testing::TestWithParam<Operation> {
 protected:
  static void SetUpTestSuite() { EncodingConvertor::initializeInstance(nullptr); }
  void agree(const std::string& bytes, int capacity) {
    if (HasFailure()) return;
    const std::string difference = disagreement(operation, bytes, capacity);
    EXPECT_TRUE(difference.empty()) << difference;
  }
  void agreeWithRoom(const std::string& bytes) { agree(bytes, operation.enough(bytes.size())); }
  void agreeAtAnyCapacity(const std::string& bytes) {
    const int most = operation.takesCapacity() ? operation.enough(bytes.size()) : -1;
    for (int capacity = -1; capacity <= most; ++capacity) agree(bytes, capacity);
  }
  const Operation& operation = GetParam();
};

// What stands before and behind a pair of bytes: nothing, ASCII, and where the operation has a
// state, what leads into it.
std::vector<std::pair<std::string, std::string>> surroundings(const Operation& operation) {
  const std::string& name = operation.name;
  if (name.starts_with("hz")) {
    return {{"", ""}, {"x", "yz"}, {"~{", "~}a"}, {"~", "bc"}, {"~{~", "<V~}a"}};
  }
  if (name.starts_with("trimgPunc")) {
    const std::string character = fromHex("B0 A1");
    const std::string marks = fromHex("A1 A3 A1 A3 A1 A3 A1 A3");
    return {{"", character}, {character, character}, {character + marks, marks + character}};
  }
  if (name != "utf82sgbk") return {{"", ""}, {"x", "yz"}};
  // Every code point among them: all groups of three bytes, all beginnings of four.
  std::vector<std::pair<std::string, std::string>> all = {{"", ""}, {"x", "yz"}, {"A\xF0", "\x80"}};
  for (int lead = 0xE0; lead <= 0xF4; ++lead) {
    for (const char* const behind : {"", "\x80", "\xB8\xAD"}) {
      all.emplace_back(std::string(1, static_cast<char>(lead)), behind);
    }
  }
  return all;
}

TEST_P(Agreement, OnEveryPairOfBytes) {
  const auto around = surroundings(operation);
  for (int code = 0; code < 65536; ++code) {
    const std::string pair = {static_cast<char>(code & 0xFF), static_cast<char>(code >> 8)};
    for (const auto& [before, behind] : around) agreeWithRoom(before + pair + behind);
    // All places of a block alike.
    std::string run = pair;
    for (int i = 0; i < 10; ++i) run += pair;
    agreeWithRoom(run);
  }
}

TEST_P(Agreement, OnEveryShortStringOfTellingBytes) {
  for (const int length : {0, 1, 2, 3}) {
    for (const std::string& s : operation.tellingStrings(length)) agreeAtAnyCapacity(s);
  }
}

// Runs of one kind may be converted many bytes at a time, so whatever breaks them is put at every
// place of such a block.
TEST_P(Agreement, OnWhateverBreaksALongRun) {
  const auto single = [&](int b) {
    return std::string{static_cast<char>(b), '\0'}.substr(0, operation.readsUnits() ? 2 : 1);
  };
  std::vector<std::string> breaks = operation.tellingStrings(2);
  for (int b = 0; b < 256; ++b) breaks.push_back(single(b));
  std::mt19937 random(5);
  std::string ascii;
  std::string characters;
  for (int i = 0; i < 40; ++i) {
    ascii += single('a' + i % 26);
    characters += operation.randomCharacter(random);
  }
  for (const std::string& run : {ascii, characters}) {
    for (const std::string& piece : breaks) {
      for (std::size_t at = 0; at <= 16; ++at) agreeWithRoom(std::string(run).insert(at, piece));
    }
    // Bytes that are dropped do not cover what a block may have left behind its result.
    for (int b = 0; b < 256; ++b) {
      std::string text = run;
      for (int i = 0; i < 100; ++i) text += single(b);
      agreeWithRoom(text);
    }
  }
}

TEST_P(Agreement, OnRandomText) {
  std::mt19937 random(20);
  const auto below = [&](std::size_t n) { return random() % n; };
  for (int round = 0; round < 3000; ++round) {
    // Long runs of one kind and quick changes between kinds.
    std::string text;
    const std::size_t length = below(round % 8 == 0 ? 400 : 120);
    const std::size_t runs = 1 + below(20);
    while (text.size() < length) {
      const auto kind = below(4);
      const std::string telling = operation.tellingCharacter(random);
      if (operation.readsUnits() && text.size() % 2 != 0) text += '\0';
      for (std::size_t i = 1 + below(runs); i-- > 0;) {
        if (kind == 0) text += static_cast<char>(below(256));
        if (kind == 1) text += static_cast<char>(0x20 + below(0x5F));
        if (kind == 2) text += operation.randomCharacter(random);
        if (kind == 3) text += below(3) != 0 ? telling : operation.tellingCharacter(random);
      }
    }
    agreeWithRoom(text);
    agree(text, static_cast<int>(below(2 * length + 8)));
    if (round % 20 == 0) agreeAtAnyCapacity(text);
  }
}

TEST_P(Agreement, NoTextIsNotRead) {
  if (!operation.takesCapacity() || operation.isTerminated()) return;
  char dest[8];
  EXPECT_EQ(operation.call(nullptr, 0, dest, 8), 0);
  if (!operation.name.starts_with("decodelibpage")) {
    EXPECT_EQ(operation.call(nullptr, -2, dest, 8), 0);
  }
}

// The same tests run once more with another table library in the place of ours.
TEST(TableLibrary, IsTheOneAskedFor) {
  const gchar_t userDefined = 0xA1AA;
  EXPECT_EQ(tables().simplified[userDefined] != CHINESE_SPACE_CHAR,
            std::getenv("SGBK_OTHER_TABLES") != nullptr);
}

INSTANTIATE_TEST_SUITE_P(All, Agreement, testing::ValuesIn(operations()),
                         [](const auto& parameter) {
                           std::string name = parameter.param.name;
                           for (char& c : name) c = c == ' ' ? '_' : c;
                           return name;
                         });

}  // namespace
}  // namespace sgbk_test
