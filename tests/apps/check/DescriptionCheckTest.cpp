// SPDX-License-Identifier: MIT
#include <string>

#include "apps/check/DescriptionCheck.h"
#include "apps/check/FileCheck.h"
#include "tests/apps/check/Damage.h"
#include "tests/support/TempFolder.h"

namespace korval::tests {
namespace {

constexpr std::string_view kRight = R"(<xml>
  <ecu name="ENGINE" url="engine.xml">
    <data name="Speed" shortname="n"/>
    <data name="Load" shortname="l"/>
  </ecu>
  <ecu name="ABS" url="abs.xml"/>
  <ecu name="AUTOCAN" url="car.xml"/>
</xml>
)";

constexpr char kEngine[] = R"(<xml><qor:Target><Function Name="ENGINE"/><Requests><Request Name="R">
<Sent Bytes="2101"><DataItem Name="Idle" FirstByte="2"/></Sent>
<Received><DataItem Name="Speed" Ref="1" FirstByte="3"/><DataItem Name="Load" Ref="1" FirstByte="4"/>
<DataItem Name="Hidden" FirstByte="5"/></Received></Request></Requests></qor:Target></xml>)";

constexpr char kAbs[] = R"(<xml><qor:Target><Function Name="ABS" Protocol="DiagOnCAN"/></qor:Target></xml>)";

constexpr char kCar[] =
    R"(<xml><messaging><Diagnostic Function="ABS" RequestId="740" ResponseId="760"/></messaging>
</xml>)";

/// A description file in one folder, and the files that its urls lead to in another.
class DescriptionCheckTest : public ::testing::TestWithParam<Damage> {
 protected:
  DescriptionCheckTest() {
    korv_.Write("engine.xml", kEngine);
    korv_.Write("other.xml", kEngine);
    korv_.Write("abs.xml", kAbs);
    korv_.Write("car.xml", kCar);
    korv_.Write("nameless.xml", "<xml><qor:Target><Function/></qor:Target></xml>");
    korv_.Write("damaged.xml", "<xml><qor:Target>");
  }
  std::vector<apps::Finding> Check(const std::string& text) const {
    asap_.Write("bench.xml", text);
    apps::CheckedFile file(asap_.Path("bench.xml"));
    apps::CheckFile(file, korv_.Path());
    return file.Findings();
  }

  TempFolder asap_;
  TempFolder korv_;
};

TEST_F(DescriptionCheckTest, FindsNothingInARightFile) {
  EXPECT_THAT(Check(std::string(kRight)), ::testing::IsEmpty());
}

TEST_F(DescriptionCheckTest, LooksForEcuFilesBesideTheDescriptionWhenNoFolderIsGiven) {
  korv_.Write("bench.xml", kRight);
  apps::CheckedFile file(korv_.Path("bench.xml"));
  apps::CheckFile(file, std::nullopt);
  EXPECT_THAT(file.Findings(), ::testing::IsEmpty());
}

TEST_P(DescriptionCheckTest, FindsADamageOnce) { ExpectOnly(Check(Damaged(kRight, GetParam())), GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Section, DescriptionCheckTest,
    ::testing::Values(
        Damage{"WithoutName", "name=\"ENGINE\"", "", 2, "a client cannot select it"},
        Damage{"NameTwice", "\"ABS\"", "\"ENGINE\"", 6, "there is a section of this name already"},
        Damage{"WithoutUrl", "url=\"engine.xml\"", "", 2, "it must name the ECU file"},
        Damage{"UrlLeadsOut", "\"engine.xml\"", "\"../engine.xml\"", 2, "leads out of the folder"},
        Damage{"UrlNamesNoFile", "\"engine.xml\"", "\"Engine.xml\"", 2, "File not found"},
        Damage{"UrlNamesADescriptionOfMessaging", "\"engine.xml\"", "\"car.xml\"", 2,
               "car.xml is no ECU file"},
        Damage{"EcuFileDamaged", "\"engine.xml\"", "\"damaged.xml\"", 2, "damaged.xml cannot be used. "},
        Damage{"EcuFileWithoutFunction", "\"engine.xml\"", "\"nameless.xml\"", 2,
               "The file names no function"},
        Damage{"FunctionOfAnotherFile", "\"abs.xml\"", "\"other.xml\"", 6,
               "the file selected last serves both"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Data, DescriptionCheckTest,
    ::testing::Values(Damage{"WithoutName", "name=\"Speed\"", "", 3, "it leads to no data item"},
                      Damage{"WithoutShortName", "shortname=\"n\"", "", 3, "a client cannot ask for it"},
                      Damage{"ShortNameTwice", "\"l\"", "\"n\"", 4, "the short name n stands here already"},
                      Damage{"UnknownItem", "\"Speed\"", "\"speed\"", 3,
                             "data speed: engine.xml has no answer with a data item of this name"},
                      Damage{"ShortNameOfAnotherItem", "\"n\"", "\"Load\"", 3,
                             "engine.xml has another data item of the name Load; a client that asks for Load "
                             "gets Speed"},
                      Damage{"ItemWithoutRef", "\"Speed\"", "\"Hidden\"", 3, "give its data item Ref=\"1\""},
                      Damage{"ItemOnlyWritten", "\"Speed\"", "\"Idle\"", 3, "only writes it"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(AutoCan, DescriptionCheckTest,
                         ::testing::Values(Damage{"Absent", "<ecu name=\"AUTOCAN\" url=\"car.xml\"/>", "", 6,
                                                  "gives the function ABS its CAN identifiers"}),
                         NameOf);

TEST_F(DescriptionCheckTest, TellsWhyTheMessagingFileCannotBeUsed) {
  const auto findings = Check(Damaged(kRight, {"", "car.xml", "abs.xml", 0, ""}));
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0].line, 6U);  // the function ABS misses its identifiers
  EXPECT_EQ(findings[1].line, 7U);
  EXPECT_THAT(findings[1].sentence, ::testing::HasSubstr("has no element xml/messaging"));
}

}  // namespace
}  // namespace korval::tests
