// SPDX-License-Identifier: MIT
#include <string>

#include <gtest/gtest.h>

#include "host/trace/TextTerminal.h"
#include "protocol/Frame.h"
#include "protocol/Reply.h"

namespace korval::protocol {
namespace {

class ReplyErrorTest : public ::testing::Test {
 protected:
  host::TextTerminal terminal_;
  host::TraceConsole console_{terminal_};
  base::ByteBuffer reply_;
};

TEST_F(ReplyErrorTest, WritesTheCodeAndTheMessageAndReturns65535) {
  EXPECT_EQ(ReplyError(console_, reply_, "no file", 1), 65535);
  EXPECT_EQ(reply_.ToHex(),
            "0001"
            "0007"
            "6E6F2066696C65"
            "00");
}

TEST_F(ReplyErrorTest, WithoutDebugTraceNothingIsTraced) {
  ReplyError(console_, reply_, "no file", 1);
  EXPECT_EQ(terminal_.Text(), "");
}

TEST_F(ReplyErrorTest, WithDebugTraceTheMessageIsTracedAndTheReplyIsTheSame) {
  console_.SetDebugTrace(true);
  EXPECT_EQ(ReplyError(console_, reply_, "no file", 1), 65535);
  EXPECT_EQ(terminal_.Text(), "no file\r\n");
  EXPECT_EQ(reply_.ToHex(), "000100076E6F2066696C6500");
}

TEST_F(ReplyErrorTest, PassesTheLibrarysNumbers) {
  ReplyError(console_, reply_, "", 2042);
  EXPECT_EQ(reply_.ToHex(), "07FA0000");
}

TEST_F(ReplyErrorTest, AppendsBehindWhatTheHandlerWrote) {
  reply_ = {0x12, 0x34};
  ReplyError(console_, reply_, "AB", 1);
  EXPECT_EQ(reply_.ToHex(),
            "1234"
            "0001"
            "0002"
            "4142");
}

TEST_F(ReplyErrorTest, ALongMessageIsClippedSoThatTheFrameFits) {
  ReplyError(console_, reply_, std::string(100000, 'x'), 1);
  EXPECT_EQ(reply_.Length(), kMaxReplyData);
  EXPECT_EQ(reply_.Word(2), kMaxReplyData - 4);

  base::ByteBuffer longer;
  longer.SetLength(1000);
  ReplyError(console_, longer, std::string(100000, 'x'), 1);
  EXPECT_EQ(longer.Length(), kMaxReplyData);
  EXPECT_EQ(longer.Word(1002), kMaxReplyData - 1004);
}

TEST_F(ReplyErrorTest, TheClipCountsCharactersNotBytes) {
  std::string degrees;
  for (int i = 0; i < 40000; ++i) degrees += "\xC2\xB0";
  ReplyError(console_, reply_, degrees, 1);
  EXPECT_EQ(reply_.Word(2), 40000);
  EXPECT_EQ(reply_.Length(), 40004U);
}

}  // namespace
}  // namespace korval::protocol
