// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "ecu/dbc/DbcMessaging.h"
#include "ecu/description/ItemCoding.h"
#include "ecu/ecufile/MessagingReader.h"
#include "tests/support/TempFolder.h"

namespace korval::ecu {
namespace {

MessagingFile Load(const std::string& content, const std::string& name = "messaging.xml") {
  const tests::TempFolder folder;
  folder.Write(name, content);
  return LoadMessagingFile(folder.Path(name));
}

TEST(MessagingFileTest, DiagnosticsAndFramesAsGiven) {
  const MessagingFile file = Load(
      "<xml><messaging Bitrate='250000'><Diagnostic Function='ABS' RequestId='740' ResponseId='760' "
      "BlockSize='8' "
      "StMinMs='10' Padding='AA'/><Frame Id='18FEF100' Name='Wheel' CycleMs='10'>"
      "<DataItem Name='WheelSpeed' FirstByte='1' BitsCount='16' Step='0.01' "
      "Unit='km/h'/></Frame></messaging></xml>");
  EXPECT_EQ(file.bitrate, 250000);
  ASSERT_EQ(file.diagnostics.size(), 1U);
  EXPECT_EQ(file.diagnostics[0].function, "ABS");
  const TransportDescription transport = file.TransportOf("ABS");
  EXPECT_EQ(transport.request_id, (CanIdentifier{0x740, false}));
  EXPECT_EQ(transport.response_id, (CanIdentifier{0x760, false}));
  EXPECT_EQ(transport.block_size, 8);
  EXPECT_EQ(transport.st_min_ms, 10);
  EXPECT_EQ(transport.padding, 0xAA);
  EXPECT_FALSE(file.TransportOf("ENGINE").request_id);
  ASSERT_EQ(file.frames.size(), 1U);
  EXPECT_EQ(file.frames[0].identifier, (CanIdentifier{0x18FEF100, true}));
  EXPECT_EQ(file.frames[0].cycle, Milliseconds(10));
  ASSERT_EQ(file.frames[0].items.size(), 1U);
  EXPECT_EQ(file.frames[0].items[0].name, "WheelSpeed");
}

TEST(MessagingFileTest, ElementsWithoutIdentifiersAreLeftOut) {
  const MessagingFile file = Load(
      "<xml><messaging Bitrate='0'><Diagnostic Function='ABS' RequestId='xyz' ResponseId='760'/>"
      "<Frame Name='A'/><Frame Id='1A0'/><Frame Id='123456789' Name='B'/></messaging></xml>");
  EXPECT_EQ(file.bitrate, 500000);
  EXPECT_TRUE(file.diagnostics.empty());
  EXPECT_TRUE(file.frames.empty());
}

TEST(MessagingFileTest, ItemOutsideItsFrameIsRefusedByName) {
  const auto refusal = [](const std::string& place) {
    try {
      Load("<xml><messaging><Frame Id='1A0' Name='Wheel'><DataItem Name='Speed' " + place +
           "/></Frame></messaging></xml>");
      return std::string("loaded");
    } catch (const base::Failure& failure) {
      return failure.Description();
    }
  };
  EXPECT_THAT(refusal("FirstByte='9'"), testing::HasSubstr("messaging.xml: frame Wheel: the data item Speed "
                                                           "needs 9 bytes, but a CAN frame has 8"));
  EXPECT_THAT(refusal("FirstByte='8' BitOffset='1'"), testing::HasSubstr("needs 9 bytes"));
  EXPECT_THAT(refusal("FirstByte='8' BitsCount='16' ByteOrder='little'"),
              testing::HasSubstr("needs 9 bytes"));
  EXPECT_THAT(refusal("FirstByte='1' BitsCount='72' Coding='ascii'"), testing::HasSubstr("needs 9 bytes"));
  EXPECT_EQ(refusal("FirstByte='1' BitsCount='64'"), "loaded");
  EXPECT_EQ(refusal("FirstByte='8'"), "loaded");
}

TEST(MessagingFileTest, OtherFilesAreRefusedWithASentence) {
  EXPECT_THROW(LoadMessagingFile("/nowhere/messaging.xml"), base::Failure);
  EXPECT_THROW(Load("<xml/>"), base::Failure);
  EXPECT_THROW(Load("<xml><messaging>"), base::Failure);
  EXPECT_THROW(LoadMessagingFile("/nowhere/messaging.dbc"), base::Failure);
  EXPECT_THROW(Load("VERSION \"\"\n", "bus.dbc"), base::Failure);
}

TEST(MessagingFileTest, MessagesOfADbcFileAreFramesWithItsSignalsAsItems) {
  const MessagingFile file = Load(
      "BO_ 416 Wheel: 8 ABS\r\n SG_ Speed : 0|16@1+ (0.01,0) [0|655.35] \"km/h\" Vector__XXX\r\n"
      " SG_ Temp : 23|8@0- (1,-40) [0|0] \"\xB0\x43\" ECU\r\nBA_ \"GenMsgCycleTime\" BO_ 416 10;\r\n",
      "bus.dbc");
  ASSERT_EQ(file.frames.size(), 1U);
  EXPECT_EQ(file.frames[0].name, "Wheel");
  EXPECT_EQ(file.frames[0].identifier, (CanIdentifier{0x1A0, false}));
  EXPECT_EQ(file.frames[0].cycle, Milliseconds(10));
  ASSERT_EQ(file.frames[0].items.size(), 2U);
  const base::ByteBuffer frame = base::ByteBuffer::FromHex("D2040A00");
  EXPECT_EQ(DecodeItem(file.frames[0].items[0], frame.View()), base::Variant(12.34));
  EXPECT_EQ(file.frames[0].items[1].unit,
            "\xC2\xB0"
            "C");
  EXPECT_EQ(DecodeItem(file.frames[0].items[1], frame.View()), base::Variant(-30.0));
}

TEST(MessagingFileTest, MultiplexedSignalsHaveAFrameForEachValueOfTheMultiplexor) {
  const MessagingFile file = ReadDbc(
      "BO_ 2 Dash: 3 X\n SG_ Page M : 0|8@1+ (1,0) [0|1] \"\" X\n SG_ Oil m0 : 8|8@1+ (1,0) [0|1] \"\" X\n"
      " SG_ Fuel m7 : 8|8@1+ (1,0) [0|1] \"\" X\n SG_ Alive : 16|8@1+ (1,0) [0|1] \"\" X\n");
  ASSERT_EQ(file.frames.size(), 3U);
  EXPECT_EQ(file.frames[0].name, "Dash");
  EXPECT_FALSE(file.frames[0].multiplexor);
  ASSERT_EQ(file.frames[0].items.size(), 2U);
  EXPECT_EQ(file.frames[0].items[1].name, "Alive");
  EXPECT_EQ(file.frames[2].name, "Dash m7");
  ASSERT_TRUE(file.frames[2].multiplexor);
  EXPECT_EQ(file.frames[2].multiplexor->item.name, "Page");
  EXPECT_EQ(file.frames[2].multiplexor->raw, 7);
  ASSERT_EQ(file.frames[2].items.size(), 1U);
  EXPECT_EQ(file.frames[2].items[0].name, "Fuel");
}

}  // namespace
}  // namespace korval::ecu
