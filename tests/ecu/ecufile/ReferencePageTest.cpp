// SPDX-License-Identifier: MIT
// Holds the tables of docs/ecu-file.md to the grammar: every attribute has a row, with its symbol, its
// default and its range.
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ecu/ecufile/Grammar.h"
#include "tests/ecu/ecufile/RuleText.h"

namespace korval::ecu {
namespace {

std::string Page() {
  std::ifstream file(KORVAL_SOURCE_DIR "/docs/ecu-file.md");
  std::stringstream content;
  content << file.rdbuf();
  return content.str();
}

// The cells of "| a | b |".
std::vector<std::string> Cells(const std::string& line) {
  std::vector<std::string> cells;
  std::size_t begin = line.find('|') + 1;
  for (std::size_t end; (end = line.find('|', begin)) != std::string::npos; begin = end + 1) {
    const std::string cell = line.substr(begin, end - begin);
    const std::size_t first = cell.find_first_not_of(' ');
    cells.push_back(first == std::string::npos ? ""
                                               : cell.substr(first, cell.find_last_not_of(' ') - first + 1));
  }
  return cells;
}

// The names in backticks.
std::vector<std::string> Names(const std::string& cell) {
  std::vector<std::string> names;
  for (std::size_t begin = 0; (begin = cell.find('`', begin)) != std::string::npos;) {
    const std::size_t end = cell.find('`', begin + 1);
    if (end == std::string::npos) break;
    names.push_back(cell.substr(begin + 1, end - begin - 1));
    begin = end + 1;
  }
  return names;
}

using Row = std::map<std::string, std::string>;                   // by the heading of its column
using Rows = std::map<std::pair<std::string, std::string>, Row>;  // by element and attribute

// The element whose attributes the tables below a heading are about; "" where its tables are about other
// things.
std::string ElementOf(const std::string& heading) {
  static const std::map<std::string, std::string> kElements{{"Function", "Function"},
                                                            {"Times and the K-line", "Function"},
                                                            {"Diagnostics on CAN", "Function"},
                                                            {"ReferenceData", "Item"},
                                                            {"Requests/Request", "Request"},
                                                            {"DataItem", "DataItem"},
                                                            {"Text", "Text"},
                                                            {"xml/Simulation", "Simulation"},
                                                            {"Signal", "Signal"},
                                                            {"Dtc", "Dtc"},
                                                            {"Answer", "Answer"},
                                                            {"Fault", "Fault"},
                                                            {"XML", "messaging"},
                                                            {"The description file", "ecu"}};
  const auto found = kElements.find(heading);
  return found == kElements.end() ? "" : found->second;
}

// A row "`Rts`, `Dtr`" is about two attributes; in a table of elements and attributes, "`Sent`, `Bytes`" is
// about the attribute of an element.
void AddRow(const std::string& element, const std::vector<std::string>& head,
            const std::vector<std::string>& cells, Rows& rows) {
  Row row;
  for (std::size_t i = 0; i < head.size() && i < cells.size(); ++i) row[head[i]] = cells[i];
  const std::vector<std::string> names = Names(cells.at(0));
  const bool of_other = head.at(0) == "element, attribute" && names.size() == 2;
  if (of_other) {
    rows[{names[0], names[1]}] = row;
    return;
  }
  for (const std::string& name : names) rows[{element, name}] = row;
}

Rows ReadRows(const std::string& page) {
  Rows rows;
  std::string element;
  std::vector<std::string> head;
  std::istringstream lines(page);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("#")) element = ElementOf(line.substr(line.find(' ') + 1));
    if (!line.starts_with("|")) {
      head.clear();
      continue;
    }
    const std::vector<std::string> cells = Cells(line);
    if (head.empty()) {
      head = cells;
    } else if (!cells.at(0).starts_with("---") && !element.empty() && head.at(0).ends_with("attribute")) {
      AddRow(element, head, cells, rows);
    }
  }
  return rows;
}

class ReferencePageTest : public testing::Test {
 protected:
  // What the page says of an attribute of a Diagnostic element it says of Function.
  const Row* Find(const Element& element, const Attribute& attribute) const {
    auto found = rows_.find({element.name, attribute.name});
    if (found == rows_.end() && element.name == std::string_view("Diagnostic")) {
      found = rows_.find({"Function", attribute.name});
    }
    return found == rows_.end() ? nullptr : &found->second;
  }

  const Rows rows_ = ReadRows(Page());
};

std::string Cell(const Row& row, const std::string& column) {
  const auto found = row.find(column);
  return found == row.end() ? "" : found->second;
}

TEST_F(ReferencePageTest, EveryAttributeHasARowWithItsDefaultAndRange) {
  std::size_t compared = 0;
  for (const Element& element : kGrammar) {
    for (const Attribute& attribute : element.attributes) {
      const std::string what = std::string(element.name) + ", " + attribute.name;
      const Row* const row = Find(element, attribute);
      ASSERT_NE(row, nullptr) << what << " has no row";
      const auto fallback = tests::DefaultText(attribute);
      const bool of_either_file = attribute.kind == Attribute::Kind::kIdentifier;
      if (fallback && !of_either_file) {
        EXPECT_EQ(Cell(*row, "default"), *fallback) << what;
        ++compared;
      }
      if (const auto range = tests::RangeText(attribute)) {
        EXPECT_TRUE(Cell(*row, "range").starts_with(*range))
            << what << " is " << Cell(*row, "range") << " and not " << *range;
        ++compared;
      }
      if (*attribute.symbol != '\0') {
        EXPECT_EQ(Cell(*row, "symbol"), attribute.symbol) << what;
      }
    }
  }
  EXPECT_GE(compared, 150U);
}

TEST_F(ReferencePageTest, EveryRowIsAboutAnAttributeOrAChildOfItsElement) {
  for (const auto& [names, row] : rows_) {
    const bool known =
        std::any_of(kGrammar.begin(), kGrammar.end(), [&names = names](const Element& element) {
          if (element.name == names.second) return true;
          return element.name == names.first &&
                 std::any_of(element.attributes.begin(), element.attributes.end(),
                             [&](const Attribute& attribute) { return attribute.name == names.second; });
        });
    EXPECT_TRUE(known) << names.first << " " << names.second;
  }
}

TEST_F(ReferencePageTest, NamesEveryElement) {
  const std::string page = Page();
  for (const Element& element : kGrammar) {
    EXPECT_NE(page.find("`" + std::string(element.name) + "`"), std::string::npos) << element.name;
  }
}

}  // namespace
}  // namespace korval::ecu
