// What docs/ shows and promises: every row of its example tables, and the sizes that it calls
// enough.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/hex.h"
#include "support/operations.h"

namespace sgbk_test {
namespace {

// The rows of all tables whose header begins so, as cells.
std::vector<std::vector<std::string>> rowsBelow(const std::string& header) {
  EncodingConvertor::initializeInstance(nullptr);
  std::vector<std::vector<std::string>> rows;
  for (const auto& page : std::filesystem::directory_iterator(SGBK_FOLDER "/docs")) {
    std::ifstream in(page.path());
    bool inTable = false;
    for (std::string line; std::getline(in >> std::ws, line);) {
      inTable = line.starts_with(header) || (inTable && line.starts_with("|"));
      if (!inTable || line.starts_with(header) || line.starts_with("|---")) continue;
      rows.emplace_back();
      std::istringstream cells(line.substr(1));
      for (std::string cell; std::getline(cells, cell, '|');) rows.back().push_back(cell);
    }
  }
  return rows;
}

std::vector<std::string> quoted(const std::string& cell) {
  std::vector<std::string> found;
  std::istringstream in(cell);
  for (std::string text; std::getline(in, text, '`') && std::getline(in, text, '`');) {
    found.push_back(text);
  }
  return found;
}

TEST(Documentation, ExamplesAreTrue) {
  const auto rows = rowsBelow("| operation | source | room | returns | destination |");
  EXPECT_GT(rows.size(), 80u);
  for (const auto& cells : rows) {
    const std::string name = quoted(cells.at(0)).at(0);
    const std::string source = quoted(cells.at(1)).at(0);
    const Outcome outcome =
        run(operationNamed(name), fromHex(source), Destination{std::stoi(cells.at(2)), '\x5A'});
    const std::string expected = cells.at(4) == " nothing " ? "" : quoted(cells.at(4)).at(0);
    EXPECT_EQ(outcome.result, std::stol(cells.at(3))) << name << " of " << source;
    EXPECT_EQ(toHex(outcome.dest).substr(0, expected.size()), expected) << name << " of " << source;
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
  for (const auto& cells : rowsBelow("| operation | *n* counts | room counts | enough |")) {
    for (const std::string& name : quoted(cells.at(0))) {
      const Operation& operation = operationNamed(name);
      if (!operation.takesCapacity()) continue;
      SCOPED_TRACE(name);
      for (const int n : {0, 1, 2}) holdSize(operation, quoted(cells.at(3)).at(0), n);
      ++checked;
    }
  }
  EXPECT_EQ(checked, 14);
}

}  // namespace
}  // namespace sgbk_test
