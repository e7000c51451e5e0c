// What docs/ shows and promises: every row of its example tables, and the sizes that it calls
// enough.

#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/operations.h"

namespace sgbk_test {
namespace {

TEST(Documentation, ExamplesAreTrue) {
  EncodingConvertor::initializeInstance(nullptr);
  const auto rows = rowsBelow("| operation | source | room | returns | destination |");
  EXPECT_GT(rows.size(), 80u);
  for (const auto& cells : rows) {
    const Operation& operation = operationNamed(quoted(cells.at(0)));
    const std::string src = quoted(cells.at(1));
    const int room = std::stoi(cells.at(2));
    const Outcome outcome = run(operation, src, Destination{room, '\x5A'});
    EXPECT_EQ(outcome.result, std::stol(cells.at(3))) << cells[0] << cells[1];
    EXPECT_TRUE(outcome.dest.starts_with(quoted(cells.at(4)))) << cells[0] << cells[1];
    EXPECT_EQ(disagreement(operation, src, room), "");
  }
}

// "5n/2 + 3" for n.
int valueOf(const std::string& formula, int n) {
  const std::size_t sum = formula.find('+');
  const int factor = formula[0] == 'n' ? 1 : std::stoi(formula);
  const int rest = sum == std::string::npos ? 0 : std::stoi(formula.substr(sum + 1));
  return factor * n / (formula.find("/2") == std::string::npos ? 1 : 2) + rest;
}

void holdSize(const Operation& operation, const std::string& formula, int n) {
  const int enough = valueOf(formula, n);
  bool lessWillDo = true;
  for (const std::string& src : operation.tellingStrings(operation.readsUnits() ? 2 * n : n)) {
    const auto withRoom = [&](int room) {
      Outcome outcome = run(operation, src, Destination{room, '\x5A'});
      outcome.dest.resize(static_cast<std::size_t>(enough * operation.elementSize()), '\x5A');
      return outcome;
    };
    const Outcome outcome = withRoom(enough);
    ASSERT_EQ(outcome, withRoom(operation.enough(src.size()))) << toHex(src);
    lessWillDo = lessWillDo && withRoom(enough - 1) == outcome;
  }
  EXPECT_TRUE(n < 2 || !lessWillDo);
}

TEST(Documentation, SizesCalledEnoughSufficeAndNothingLess) {
  int checked = 0;
  EncodingConvertor::initializeInstance(nullptr);
  for (const auto& cells : rowsBelow("| operation | *n* counts | room counts | enough |")) {
    for (const Operation& operation : operations()) {
      if (cells.at(0).find('`' + operation.name + '`') == std::string::npos) continue;
      if (!operation.takesCapacity()) continue;
      SCOPED_TRACE(operation.name);
      for (const int n : {0, 1, 2}) holdSize(operation, quoted(cells.at(3)), n);
      ++checked;
    }
  }
  EXPECT_EQ(checked, 14);
}

}  // namespace
}  // namespace sgbk_test
