// SPDX-License-Identifier: MIT
#include <array>
#include <string>

#include <gtest/gtest.h>

#include "ecu/ecufile/ErrorFile.h"
#include "tests/support/TempFolder.h"

namespace korval::ecu {
namespace {

constexpr std::array<std::int32_t, 15> kNumbers{1000, 1001, 1002, 1015, 2000, 2001, 2002, 2003,
                                                2010, 2011, 2012, 2020, 2042, 2045, 2046};

TEST(ErrorTableTest, EveryNumberHasABuiltInText) {
  const ErrorTable table;
  for (const std::int32_t number : kNumbers) {
    EXPECT_NE(table.Text(number), "Error " + std::to_string(number));
  }
  EXPECT_EQ(table.Text(2044), "Error 2044");
}

TEST(ErrorTableTest, FileThatComesWithTheServerSaysWhatIsBuiltIn) {
  const ErrorTable built_in;
  ErrorTable loaded;
  LoadErrorFile(KORVAL_SOURCE_DIR "/data/errors.xml", loaded);
  for (const std::int32_t number : kNumbers) EXPECT_EQ(loaded.Text(number), built_in.Text(number));
  EXPECT_TRUE(loaded.IsLoaded());
}

TEST(ErrorTableTest, TextsOfTheLanguageTakeThePlaceOfTheBuiltInOnes) {
  const tests::TempFolder folder;
  folder.Write("errors.xml",
               "<errors><error number='2000'><text lang='de'>Keine Antwort</text><text "
               "lang='en'>Silence</text></error>"
               "<error number='2044'><text lang='de'>Neu</text></error><error number='x'><text "
               "lang='de'>?</text></error>"
               "<error number='2001'><text lang='en'>No</text></error></errors>");
  ErrorTable table;
  table.SetLanguage("de");
  EXPECT_EQ(LoadErrorFile(folder.Path("errors.xml"), table), "");
  EXPECT_EQ(table.Text(2000), "Keine Antwort");
  EXPECT_EQ(table.Text(2044), "Neu");
  EXPECT_EQ(table.Text(2001), "Negative answer");
}

TEST(ErrorTableTest, MissingOrDamagedFileLeavesTheBuiltInTexts) {
  const tests::TempFolder folder;
  folder.Write("damaged.xml", "<errors><error number='2000'>");
  ErrorTable table;
  for (const char* name : {"missing.xml", "damaged.xml"}) {
    LoadErrorFile(folder.Path(name), table);
    EXPECT_FALSE(table.IsLoaded());
    EXPECT_EQ(table.Text(2000), "No answer from the ECU");
  }
}

TEST(ErrorTableTest, FailureSaysTheTextAndWhatHappened) {
  const ErrorTable table;
  const base::Failure failure = table.MakeFailure(2000, "ENGINE is off");
  EXPECT_EQ(failure.Number(), 2000);
  EXPECT_EQ(failure.Description(), "No answer from the ECU: ENGINE is off");
  EXPECT_EQ(table.MakeFailure(1001).Description(), "No diagnostic interface configured");
}

}  // namespace
}  // namespace korval::ecu
