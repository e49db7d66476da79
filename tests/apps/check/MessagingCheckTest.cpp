// SPDX-License-Identifier: MIT
#include <string>

#include "apps/check/FileCheck.h"
#include "apps/check/MessagingCheck.h"
#include "tests/apps/check/Damage.h"

namespace korval::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::string_view kRight = R"(<xml><messaging Bitrate="500000">
  <Diagnostic Function="ABS" RequestId="740" ResponseId="760" BlockSize="0" Padding="none"/>
  <Diagnostic Function="ENGINE" RequestId="7E0" ResponseId="7E8"/>
  <Frame Id="1A0" Name="Wheel" CycleMs="10">
    <DataItem Name="Speed" FirstByte="7" BitsCount="16"/>
    <DataItem Name="Valid" FirstByte="1" BitsCount="1"/>
  </Frame>
  <Frame Id="000001A0" Name="Brake"/>
</messaging></xml>
)";

std::vector<apps::Finding> Check(const std::string& name, const std::string& text) {
  apps::CheckedFile file(name, text);
  apps::CheckFile(file, std::nullopt);
  return file.Findings();
}

TEST(MessagingCheckTest, FindsNothingInARightFile) {
  EXPECT_THAT(Check("messaging.xml", std::string(kRight)), IsEmpty());
}

class MessagingDamage : public ::testing::TestWithParam<Damage> {};

TEST_P(MessagingDamage, IsFoundOnce) {
  ExpectOnly(Check("messaging.xml", Damaged(kRight, GetParam())), GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Messaging, MessagingDamage,
    ::testing::Values(
        Damage{"Bitrate", "500000", "500k", 1, "Bitrate=\"500k\" is no whole number from 1000 to 1000000"},
        Damage{"DiagnosticWithoutFunction", "Function=\"ABS\"", "", 2, "Function is missing"},
        Damage{"FunctionTwice", "\"ENGINE\"", "\"ABS\"", 3, "the function stands here already"},
        Damage{"DiagnosticWithoutAnswer", "ResponseId=\"760\"", "", 2, "ResponseId is missing"},
        Damage{"RequestIdNoHex", "\"740\"", "\"7G0\"", 2, "RequestId=\"7G0\" is no CAN identifier"},
        Damage{"SameIdentifiers", "\"760\"", "\"740\"", 2, "RequestId and ResponseId are the same"},
        Damage{"Padding", "\"none\"", "\"no\"", 2, "Padding=\"no\" is no hexadecimal number"},
        Damage{"FrameWithoutIdentifier", "Id=\"1A0\"", "", 4, "Id is missing; the frame is left out"},
        Damage{"FrameIdentifierTooLarge", "\"1A0\"", "\"1A00\"", 4, "Id=\"1A00\" is no CAN identifier"},
        Damage{"FrameIdentifierTwice", "000001A0", "1A0", 8, "Wheel uses the same identifier"},
        Damage{"FrameIdentifierOfADiagnostic", "000001A0", "7E8", 8, "ENGINE uses the same identifier"},
        Damage{"FrameWithoutName", "Name=\"Wheel\"", "", 4, "Name is missing; the frame is left out"},
        Damage{"FrameNameTwice", "\"Brake\"", "\"Wheel\"", 8, "there is a frame of this name already"},
        Damage{"CycleNoNumber", "\"10\"", "\"10 ms\"", 4, "CycleMs=\"10 ms\" is no whole number"},
        Damage{"ItemOutsideTheFrame", "FirstByte=\"7\"", "FirstByte=\"8\"", 5,
               "DataItem Speed: needs 9 bytes, but a CAN frame has 8."},
        Damage{"ItemLeftOut", "FirstByte=\"1\"", "", 6, "FirstByte is missing"},
        Damage{"SecondMessaging", "</xml>", "<messaging/></xml>", 9, "only the first one is used"}),
    NameOf);

constexpr char kDbc[] = R"(VERSION ""

BO_ 416 Wheel: 8 Vector__XXX
 SG_ Speed : 0|16@1+ (0.01,0) [0|655.35] "km/h" Vector__XXX
)";

TEST(MessagingCheckTest, FindsNothingInARightDbcFile) { EXPECT_THAT(Check("car.dbc", kDbc), IsEmpty()); }

TEST(MessagingCheckTest, TellsTheLineOfASignalOutsideItsDbcMessage) {
  const std::string damaged = Damaged(kDbc, {"", "0|16@1", "56|16@1", 0, ""});
  EXPECT_THAT(Check("car.dbc", damaged),
              ElementsAre(apps::Finding{4, "signal Speed lies outside Wheel, left out."}));
}

TEST(MessagingCheckTest, TellsADbcMessageLongerThanAFrameOfClassicCan) {
  const auto findings = Check("CAR.DBC", Damaged(kDbc, {"", "Wheel: 8", "Wheel: 64", 0, ""}));
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0], (apps::Finding{1, "The file has no message (BO_) that can be used."}));
  EXPECT_EQ(findings[1], (apps::Finding{3, "message Wheel is longer than 8 bytes, left out."}));
}

}  // namespace
}  // namespace korval::tests
