// What docs/ shows and promises: every row of its example tables, the sizes that it calls enough,
// and where its links lead.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/hex.h"
#include "support/operations.h"

namespace sgbk_test {
namespace {

namespace fs = std::filesystem;

std::string contents(const fs::path& page) {
  std::ifstream in(page);
  return {std::istreambuf_iterator<char>(in), {}};
}

// What stands in `text` between `open` and `close`, each time.
std::vector<std::string> between(const std::string& text, const std::string& open, char close) {
  std::vector<std::string> found;
  for (std::size_t at = 0; (at = text.find(open, at)) != std::string::npos;) {
    at += open.size();
    const std::size_t end = text.find(close, at);
    found.push_back(text.substr(at, end - at));
    at = end + (end != std::string::npos);
  }
  return found;
}

// The rows of all tables whose header begins so, as cells.
std::vector<std::vector<std::string>> rowsBelow(const std::string& header) {
  std::vector<std::vector<std::string>> rows;
  for (const auto& page : fs::directory_iterator(SGBK_DOCS)) {
    std::istringstream in(contents(page.path()));
    bool inTable = false;
    for (std::string line; std::getline(in, line);) {
      line.erase(0, line.find_first_not_of(' '));
      if (line.starts_with(header)) {
        inTable = true;
      } else if (!line.starts_with("|")) {
        inTable = false;
      } else if (inTable && !line.starts_with("|---")) {
        rows.emplace_back();
        std::istringstream cells(line.substr(1));
        for (std::string cell; std::getline(cells, cell, '|');) rows.back().push_back(cell);
      }
    }
  }
  return rows;
}

class Documentation : public testing::Test {
 protected:
  static void SetUpTestSuite() { EncodingConvertor::initializeInstance(nullptr); }
};

TEST_F(Documentation, ExamplesAreTrue) {
  const auto rows = rowsBelow("| operation | source | room | returns | destination |");
  EXPECT_GT(rows.size(), 80u);
  for (const auto& cells : rows) {
    ASSERT_GE(cells.size(), 5u);
    const std::string name = between(cells[0], "`", '`').at(0);
    const std::string source = between(cells[1], "`", '`').at(0);
    const Outcome outcome =
        run(operationNamed(name), fromHex(source), Destination{std::stol(cells[2]), '\x5A'});
    const std::string expected = cells[4] == " nothing " ? "" : between(cells[4], "`", '`').at(0);
    EXPECT_EQ(outcome.result, std::stol(cells[3])) << name << " of " << source;
    EXPECT_EQ(toHex(outcome.dest).substr(0, expected.size()), expected) << name << " of " << source;
  }
}

// All strings of telling bytes that make `n` units of the operation's source.
std::vector<std::string> sources(const Operation& operation, long n) {
  std::vector<std::string> strings = {""};
  for (long i = operation.text == Text::ucs2 ? 2 * n : n; i-- > 0;) {
    std::vector<std::string> longer;
    for (const std::string& start : strings) {
      for (const char c : operation.alphabet()) longer.push_back(start + c);
    }
    strings = std::move(longer);
  }
  return strings;
}

// "5n/2 + 3" for n.
long valueOf(const std::string& formula, long n) {
  const std::size_t sum = formula.find('+');
  const long factor = formula[0] == 'n' ? 1 : std::stol(formula);
  const long rest = sum == std::string::npos ? 0 : std::stol(formula.substr(sum + 1));
  return factor * n / (formula.find("/2") == std::string::npos ? 1 : 2) + rest;
}

void holdSize(const Operation& operation, const std::string& formula, long n) {
  const long enough = valueOf(formula, n);
  bool lessWillDo = true;
  for (const std::string& src : sources(operation, n)) {
    const auto withRoom = [&](long room) {
      Outcome outcome = run(operation, src, Destination{room, '\x5A'});
      outcome.dest.resize(static_cast<std::size_t>(enough * operation.elementSize), '\x5A');
      return outcome;
    };
    const Outcome outcome = withRoom(enough);
    ASSERT_EQ(outcome, withRoom(operation.enough(src.size())))
        << operation.name << ": " << toHex(src);
    lessWillDo = lessWillDo && withRoom(enough - 1) == outcome;
  }
  EXPECT_TRUE(n < 2 || !lessWillDo) << operation.name;
}

TEST_F(Documentation, SizesCalledEnoughSufficeAndNothingLess) {
  int checked = 0;
  for (const auto& cells : rowsBelow("| operation | *n* counts | room counts | enough |")) {
    const auto formula = between(cells.at(3), "`", '`');
    if (formula.empty()) continue;
    for (const std::string& name : between(cells[0], "`", '`')) {
      const Operation& operation = operationNamed(name);
      if (operation.capacity != Capacity::any) continue;
      for (const long n : {0, 1, 2}) holdSize(operation, formula[0], n);
      ++checked;
    }
  }
  EXPECT_EQ(checked, 14);
}

TEST_F(Documentation, LinksLeadSomewhere) {
  const fs::path root = fs::path(SGBK_DOCS).parent_path();
  std::vector<fs::path> pages = {root / "README.md", root / "CONTRIBUTING.md", root / "SECURITY.md",
                                 root / "data/README.md", root / "src/README.md"};
  for (const auto& page : fs::directory_iterator(SGBK_DOCS)) pages.push_back(page.path());
  for (const fs::path& page : pages) {
    for (const std::string& link : between(contents(page), "](", ')')) {
      if (link.find(':') != std::string::npos) continue;
      EXPECT_TRUE(fs::exists(page.parent_path() / link.substr(0, link.find('#'))))
          << page << ": " << link;
    }
  }
}

}  // namespace
}  // namespace sgbk_test
