// Every conversion agrees with its obvious twin, in its result and in every byte of the
// destination, and stays inside its buffers, on exhaustive and random input and on every row of the
// example tables in docs/, which are true.

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

TEST_P(Agreement, OnEveryPairOfBytes) {
  // Before and behind the pair: nothing, ASCII, GB mode, marks that are one less than a long run.
  const std::string character = "\xB0\xA1", marks = fromHex("A1 A3 A1 A3 A1 A3 A1 A3");
  std::vector<std::pair<std::string, std::string>> surroundings = {
      {"", ""}, {"x", "yz"}, {"~{", "~}a"}, {character + marks, marks + character}};
  // Every code point of UTF-8: all groups of three bytes, all beginnings of four.
  for (int lead = 0xE0; lead <= 0xF4 && operation.text == Text::utf8; ++lead) {
    surroundings.emplace_back(std::string(1, static_cast<char>(lead)), "\xB8\xAD");
  }
  for (int code = 0; code < 65536; ++code) {
    const std::string pair = {static_cast<char>(code & 0xFF), static_cast<char>(code >> 8)};
    for (const auto& [before, behind] : surroundings) agreeWithRoom(before + pair + behind);
    // All places of a block alike.
    std::string run = pair;
    for (int i = 0; i < 10; ++i) run += pair;
    agreeWithRoom(run);
  }
}

TEST_P(Agreement, OnEveryShortStringOfTellingBytes) {
  std::vector<std::string> strings = {""};
  for (std::size_t i = 0; i < strings.size(); ++i) {
    agreeAtAnyCapacity(strings[i]);
    if (strings[i].size() == 3) continue;
    for (const char c : operation.alphabet()) strings.push_back(strings[i] + c);
  }
}

// Runs of one kind, which may be converted many bytes at a time, broken anywhere by the others.
TEST_P(Agreement, OnRandomText) {
  std::mt19937 random(20);
  const auto below = [&](std::size_t n) { return random() % n; };
  const std::string alphabet = operation.alphabet();
  const auto telling = [&] { return alphabet[below(alphabet.size())]; };
  for (int round = 0; round < 6000; ++round) {
    std::string text;
    const std::size_t length = below(round % 8 == 0 ? 400 : 120);
    const std::size_t runs = 1 + below(round % 16 == 0 ? 100 : 20);
    while (text.size() < length) {
      const auto kind = below(5);
      const std::string repeated = {telling(), telling()};
      if (operation.readsUnits() && text.size() % 2 != 0) text += '\0';
      for (std::size_t i = 1 + below(runs); i-- > 0;) {
        if (kind == 0) text += static_cast<char>(below(256));
        if (kind == 1) text += static_cast<char>(0x20 + below(0x5F));
        if (kind == 1 && operation.readsUnits()) text += '\0';
        if (kind == 2) text += operation.randomCharacter(random);
        if (kind == 3) text += telling();
        if (kind == 4) text += repeated;
      }
    }
    agreeWithRoom(text);
    agree(text, static_cast<int>(below(2 * length + 8)));
    if (round % 40 == 0) agreeAtAnyCapacity(text);
  }
}

TEST_P(Agreement, NegativeSizesAreNoText) {
  if (!operation.takesCapacity() || operation.isTerminated()) return;
  if (operation.name.starts_with("decodelibpage")) return;
  char dest[8];
  EXPECT_EQ(operation.call(nullptr, -2, dest, 8), 0);
}

// The same tests run once more with another table library in the place of ours.
TEST(TableLibrary, IsTheOneAskedFor) {
  // A user-defined code.
  EXPECT_EQ(tables().simplified[0xA1AA] != CHINESE_SPACE_CHAR,
            std::getenv("SGBK_OTHER_TABLES") != nullptr);
}

TEST(Documentation, ExamplesAreTrue) {
  EncodingConvertor::initializeInstance(nullptr);
  const auto rows = rowsBelow("| operation | source | room | returns | destination |");
  EXPECT_GT(rows.size(), 80u);
  for (const auto& cells : rows) {
    const Operation operation = operationNamed(quoted(cells.at(0)));
    const std::string src = quoted(cells.at(1));
    const int room = std::stoi(cells.at(2));
    const Outcome outcome = run(operation, src, Destination{room, '\x5A'});
    EXPECT_EQ(outcome.result, std::stol(cells.at(3))) << cells[0] << cells[1];
    EXPECT_TRUE(outcome.dest.starts_with(quoted(cells.at(4)))) << cells[0] << cells[1];
    EXPECT_EQ(disagreement(operation, src, room), "");
  }
}

INSTANTIATE_TEST_SUITE_P(All, Agreement, testing::ValuesIn(operations()),
                         [](const auto& parameter) {
                           std::string name = parameter.param.name;
                           for (char& c : name) c = c == ' ' ? '_' : c;
                           return name;
                         });

}  // namespace
}  // namespace sgbk_test
