// What docs/ shows and promises: every row of its example tables, and the sizes that it calls
// enough.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "support/hex.h"
#include "support/operations.h"

namespace sgbk_test {
namespace {

// The rows of all tables that begin with `header`, as they stand.
std::vector<std::string> rowsBelow(const std::string& header) {
  std::vector<std::string> rows;
  for (const auto& page : std::filesystem::directory_iterator(SGBK_DOCS)) {
    std::ifstream in(page.path());
    bool inTable = false;
    for (std::string line; std::getline(in, line);) {
      line.erase(0, line.find_first_not_of(' '));
      if (line.starts_with(header)) {
        inTable = true;
      } else if (!line.starts_with("|")) {
        inTable = false;
      } else if (inTable && !line.starts_with("|---")) {
        rows.push_back(line);
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
  const std::regex form(
      "\\| `([^`]+)` \\| `([0-9A-F ]+)` \\| (\\d+) \\| (-?\\d+) \\| (?:`([0-9A-F ]+)`|nothing) "
      "\\|.*");
  const auto rows = rowsBelow("| operation | source | room | returns |");
  EXPECT_GT(rows.size(), 80u);
  for (const std::string& row : rows) {
    std::smatch cells;
    ASSERT_TRUE(std::regex_match(row, cells, form)) << row;
    const Outcome outcome =
        run(operationNamed(cells[1]), fromHex(cells[2]), Destination{std::stol(cells[3]), '\x5A'});
    const std::string expected = fromHex(cells[5]);
    EXPECT_EQ(outcome.result, std::stol(cells[4])) << row;
    EXPECT_EQ(toHex(outcome.dest.substr(0, expected.size())), toHex(expected)) << row;
  }
}

TEST_F(Documentation, LinksLeadSomewhere) {
  namespace fs = std::filesystem;
  const fs::path root = fs::path(SGBK_DOCS).parent_path();
  std::vector<fs::path> pages = {root / "README.md", root / "CONTRIBUTING.md", root / "SECURITY.md",
                                 root / "data/README.md", root / "src/README.md"};
  for (const auto& page : fs::directory_iterator(SGBK_DOCS)) pages.push_back(page.path());
  const std::regex link(R"(\]\(([^)#:]+)\))");
  for (const fs::path& page : pages) {
    std::ifstream in(page);
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    for (std::sregex_iterator i(text.begin(), text.end(), link), end; i != end; ++i) {
      EXPECT_TRUE(fs::exists(page.parent_path() / (*i)[1].str())) << page << ": " << (*i)[1];
    }
  }
}

// All strings of telling bytes that make `n` units of the operation's source.
std::vector<std::string> sources(const Operation& operation, std::size_t n) {
  std::vector<std::string> strings = {""};
  for (std::size_t i = operation.text == Text::ucs2 ? 2 * n : n; i-- > 0;) {
    std::vector<std::string> longer;
    for (const std::string& start : strings) {
      for (const char c : operation.alphabet()) longer.push_back(start + c);
    }
    strings = std::move(longer);
  }
  return strings;
}

TEST_F(Documentation, SizesCalledEnoughSufficeAndNothingLess) {
  const std::regex form(" `(\\d*)n(/2)?(?: \\+ (\\d))?` ");
  const std::regex name("`([^`]+)`");
  int checked = 0;
  for (const std::string& row : rowsBelow("| operation | *n* counts | room counts | enough |")) {
    std::vector<std::string> cells;
    std::istringstream in(row);
    for (std::string cell; std::getline(in, cell, '|');) cells.push_back(cell);
    std::smatch size;
    if (!std::regex_match(cells.at(4), size, form)) continue;
    const long factor = size[1].length() > 0 ? std::stol(size[1]) : 1;
    const long rest = size[3].matched ? std::stol(size[3]) : 0;
    for (std::sregex_iterator i(cells[1].begin(), cells[1].end(), name), end; i != end; ++i) {
      const Operation& operation = operationNamed((*i)[1]);
      if (operation.capacity != Capacity::any) continue;
      ++checked;
      for (const long n : {0, 1, 2}) {
        const long enough = factor * n / (size[2].matched ? 2 : 1) + rest;
        bool lessWillDo = true;
        for (const std::string& src : sources(operation, static_cast<std::size_t>(n))) {
          const auto startOfOutcome = [&](long room) {
            Outcome outcome = run(operation, src, Destination{room, '\x5A'});
            outcome.dest.resize(static_cast<std::size_t>(enough * operation.elementSize), '\x5A');
            return outcome;
          };
          const Outcome outcome = startOfOutcome(enough);
          ASSERT_EQ(outcome, startOfOutcome(operation.enough(src.size())))
              << operation.name << ": " << toHex(src);
          lessWillDo = lessWillDo && startOfOutcome(enough - 1) == outcome;
        }
        EXPECT_TRUE(n < 2 || !lessWillDo) << operation.name;
      }
    }
  }
  EXPECT_EQ(checked, 14);
}

}  // namespace
}  // namespace sgbk_test
