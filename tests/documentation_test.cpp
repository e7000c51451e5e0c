// What docs/ shows: every row of its example tables.

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

}  // namespace
}  // namespace sgbk_test
