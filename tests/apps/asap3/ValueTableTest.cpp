// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "apps/asap3/ValueTable.h"

namespace korval::apps {
namespace {

using std::chrono::milliseconds;

const ValueTable::Values kValues = {812.25F, std::nullopt};

TEST(ValueTableTest, TextIsAlignedWithItsHeader) {
  const ValueTable table({"Speed", "A very long name"});
  EXPECT_EQ(table.TextHeader(), "   seconds         Speed  A very long name");
  EXPECT_EQ(table.TextRow(milliseconds(1050), kValues), "      1.05        812.25          no value");
}

TEST(ValueTableTest, WidthsCountCharactersNotBytes) {
  EXPECT_EQ(ValueTable({"\u00D6l"}).TextHeader(), "   seconds            \u00D6l");
}

TEST(ValueTableTest, CsvLeavesAnEmptyFieldWhereThereIsNoValue) {
  const ValueTable table({"Speed", "a,\"b\""});
  EXPECT_EQ(table.CsvHeader(), "seconds,Speed,\"a,\"\"b\"\"\"");
  EXPECT_EQ(table.CsvRow(milliseconds(0), kValues), "0,812.25,");
}

TEST(ValueTableTest, JsonHasNullWhereThereIsNoValue) {
  EXPECT_EQ(ValueTable({"Speed", "Vin"}).JsonRow(milliseconds(200), kValues),
            R"({"seconds":0.2,"values":{"Speed":812.25,"Vin":null}})");
}

}  // namespace
}  // namespace korval::apps
