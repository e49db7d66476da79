// SPDX-License-Identifier: MIT
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/ClientErrors.h"
#include "client/ReplyReader.h"

namespace korval::client {
namespace {

using base::ByteBuffer;
using ::testing::HasSubstr;

ReplyReader Reply(const std::string& hex) { return ReplyReader(ByteBuffer::FromHex(hex)); }

/// Get parameter, four reals.
const std::string kFourReals = "0018000E0000444B1000444B1000444B100000000000FD07";
/// The frame that refuses a command while another one is in progress.
const std::string kBusy = "00180073FFFF0001000C476C6F62616C206572726F721B1A";

struct Refusal {
  std::uint16_t status;
  std::int32_t number;
  std::string text;
};

Refusal RefusalOf(const std::string& hex) {
  ReplyReader reply = Reply(hex);
  try {
    reply.RequireSuccess();
  } catch (const ErrorReply& error) {
    return {error.Status(), error.Number(), error.Description()};
  }
  return {};
}

TEST(ReplyReaderTest, AnEmptyReplyHasACommandAStatusAndNoData) {
  ReplyReader reply = Reply("000800320000003A");
  EXPECT_EQ(reply.Command(), 50);
  EXPECT_EQ(reply.Status(), kStatusSuccess);
  EXPECT_EQ(reply.Remaining(), 0U);
  EXPECT_NO_THROW(reply.RequireSuccess());
}

TEST(ReplyReaderTest, FieldsAreReadInOrder) {
  // Word 513, string of three characters and a fill byte, real 1.0, real8 -0.1.
  ReplyReader reply = Reply(
      "001C00140000"
      "0201"
      "000361B06300"
      "3F800000"
      "BFB999999999999A"
      "92E9");
  EXPECT_EQ(reply.Word(), 513);
  EXPECT_EQ(reply.String(), "a\u00B0c");
  EXPECT_EQ(reply.Real(), 1.0F);
  EXPECT_EQ(reply.Real8(), -0.1);
  EXPECT_EQ(reply.Remaining(), 0U);
}

TEST(ReplyReaderTest, AFieldBeyondTheDataIsRefusedAndTheOthersStay) {
  ReplyReader reply = Reply("000A000300000001000E");
  EXPECT_THROW(reply.Real(), LinkError);
  EXPECT_THROW(reply.Real8(), LinkError);
  EXPECT_EQ(reply.Word(), 1);
  EXPECT_THROW(reply.Word(), LinkError);
}

TEST(ReplyReaderTest, AStringThatClaimsMoreThanIsThereIsRefused) {
  ReplyReader reply = Reply("000E000EFFFF0001000961626187");
  EXPECT_THROW(reply.RequireSuccess(), LinkError);
}

TEST(ReplyReaderTest, AnyByteDamagedIsNoticed) {
  const ByteBuffer whole = ByteBuffer::FromHex(kFourReals);
  ASSERT_NO_THROW(ReplyReader{whole});
  for (std::size_t offset = 0; offset < whole.Length(); ++offset) {
    for (int bit = 0; bit < 8; ++bit) {
      ByteBuffer damaged = whole;
      damaged.SetAt(offset, static_cast<std::uint8_t>(whole.At(offset) ^ (1U << bit)));
      EXPECT_THROW(ReplyReader{damaged}, LinkError) << "byte " << offset << " bit " << bit;
    }
  }
}

TEST(ReplyReaderTest, AReplyCutAnywhereIsNoticed) {
  const ByteBuffer whole = ByteBuffer::FromHex(kFourReals);
  for (std::size_t length = 0; length < whole.Length(); ++length) {
    EXPECT_THROW(ReplyReader{ByteBuffer(whole.View(0, length))}, LinkError) << "after " << length << " bytes";
  }
}

TEST(ReplyReaderTest, AReplyWithBytesBehindItIsNoticed) {
  EXPECT_THROW(Reply("000800320000003A"
                     "00"),
               LinkError);
  EXPECT_THROW(Reply("000800320000003A"
                     "000800320000003A"),
               LinkError);
}

TEST(ReplyReaderTest, AFrameTooShortForAStatusIsNoReply) { EXPECT_THROW(Reply("000600020008"), LinkError); }

TEST(ReplyReaderTest, ADamagedReplyIsShown) {
  try {
    Reply("000800320000003B");
    FAIL() << "the damage was not noticed";
  } catch (const LinkError& error) {
    EXPECT_THAT(error.Description(), HasSubstr("000800320000003B"));
    EXPECT_THAT(error.Description(), HasSubstr("checksum"));
  }
}

TEST(ReplyReaderTest, TheErrorRecordGivesCodeAndMessage) {
  const Refusal refusal = RefusalOf("00140002FFFF03E900076E6F206C696E6B00674E");
  EXPECT_EQ(refusal.status, kStatusError);
  EXPECT_EQ(refusal.number, 1001);
  EXPECT_EQ(refusal.text, "no link");
}

TEST(ReplyReaderTest, AStatusWithoutARecordIsNamed) {
  EXPECT_EQ(RefusalOf("000800142343235F").number, 9027);
  EXPECT_EQ(RefusalOf("000800142343235F").text, "refused in this session state");
  EXPECT_EQ(RefusalOf("0008000256565660").number, 22102);
  EXPECT_EQ(RefusalOf("0008000256565660").text, "unknown command");
  EXPECT_EQ(RefusalOf("0008000EFFFF0015").number, 65535);
  EXPECT_EQ(RefusalOf("0008000EFFFF0015").text, "failed without a message");
  EXPECT_EQ(RefusalOf("0008000E004D0063").number, 77);
  EXPECT_EQ(RefusalOf("0008000E004D0063").text, "status 77");
}

TEST(ReplyReaderTest, AReplyToAnotherCommandIsRefusedUnlessTheServerIsBusy) {
  EXPECT_NO_THROW(Reply("000800320000003A").RequireAnswerTo(50));
  EXPECT_THROW(Reply("000800320000003A").RequireAnswerTo(2), LinkError);
  EXPECT_NO_THROW(Reply(kBusy).RequireAnswerTo(14));
  EXPECT_THROW(Reply("000800730000007B").RequireAnswerTo(14), LinkError);
  EXPECT_EQ(RefusalOf(kBusy).number, 1);
  EXPECT_EQ(RefusalOf(kBusy).text, "Global error");
}

}  // namespace
}  // namespace korval::client
