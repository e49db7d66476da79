// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "ecu/description/MessagingFile.h"
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
  EXPECT_EQ(file.diagnostics[0].request_id, 0x740U);
  EXPECT_EQ(file.diagnostics[0].response_id, 0x760U);
  EXPECT_FALSE(file.diagnostics[0].extended_ids);
  EXPECT_EQ(file.diagnostics[0].timing.block_size, 8);
  EXPECT_EQ(file.diagnostics[0].timing.st_min, Milliseconds(10));
  EXPECT_EQ(file.diagnostics[0].padding, 0xAA);
  ASSERT_EQ(file.frames.size(), 1U);
  EXPECT_EQ(file.frames[0].identifier, 0x18FEF100U);
  EXPECT_TRUE(file.frames[0].extended_id);
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

TEST(MessagingFileTest, OtherFilesAreRefusedWithASentence) {
  EXPECT_THROW(LoadMessagingFile("/nowhere/messaging.xml"), base::Failure);
  EXPECT_THROW(Load("<xml/>"), base::Failure);
  EXPECT_THROW(Load("<xml><messaging>"), base::Failure);
  try {
    Load("VERSION \"\"\nBO_ 416 Wheel: 8 ABS\n", "bus.dbc");
    ADD_FAILURE() << "a DBC file was taken";
  } catch (const base::Failure& failure) {
    EXPECT_THAT(failure.Description(), testing::HasSubstr("DBC files cannot be read yet"));
  }
}

}  // namespace
}  // namespace korval::ecu
