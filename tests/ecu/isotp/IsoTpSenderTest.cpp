// SPDX-License-Identifier: MIT
#include <chrono>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ecu/isotp/IsoTpSender.h"

namespace korval::ecu {
namespace {

using base::ByteBuffer;
using base::TimePoint;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;

// Message bytes 00 01 02 ...
ByteBuffer Message(std::size_t length) {
  ByteBuffer message;
  for (std::size_t i = 0; i < length; ++i) message.Append(static_cast<std::uint8_t>(i));
  return message;
}

class IsoTpSenderTest : public testing::Test {
 protected:
  void Start(std::size_t length) { sender.Start(Message(length).View(), now); }
  /// The frame that is due in hexadecimal; "" when none is.
  std::string Take() {
    const auto frame = sender.TakeFrame(now);
    return frame ? base::HexText(frame->View()) : "";
  }
  /// Takes a frame and confirms it.
  std::string Pass() {
    std::string frame = Take();
    sender.FrameSent(now);
    return frame;
  }
  void FlowControl(std::uint8_t status, std::uint8_t block_size = 0, std::uint8_t st_min = 0) {
    IsoTpPdu pdu;
    pdu.type = IsoTpPdu::Type::kFlowControl;
    pdu.status = status;
    pdu.block_size = block_size;
    pdu.st_min = st_min;
    sender.FlowControlArrived(pdu, now);
  }
  void Wait(microseconds span) {
    now += span;
    sender.TimeElapsed(now);
  }
  IsoTpResult Error() {
    const auto error = sender.TakeError();
    EXPECT_TRUE(error);
    text = error ? error->text : "";
    return error ? error->result : IsoTpResult::kTooLong;
  }

  IsoTpParameters parameters;
  IsoTpSender sender{parameters};
  TimePoint now{milliseconds(5000)};
  std::string text;
};

TEST_F(IsoTpSenderTest, UpToSevenBytesAreOneSingleFrame) {
  Start(7);
  EXPECT_EQ(Pass(), "0700010203040506");
  EXPECT_FALSE(sender.IsBusy());
  EXPECT_FALSE(sender.Deadline());
  EXPECT_EQ(Take(), "");
  EXPECT_FALSE(sender.TakeError());
}

TEST_F(IsoTpSenderTest, BehindAnAddressByteSixAre) {
  parameters.transmit_target = 0x10;
  Start(6);
  EXPECT_EQ(Pass(), "06000102030405");
  EXPECT_FALSE(sender.IsBusy());
  Start(7);
  EXPECT_EQ(Pass(), "10070001020304");
  FlowControl(0);
  EXPECT_EQ(Pass(), "210506");
  EXPECT_FALSE(sender.IsBusy());
}

TEST_F(IsoTpSenderTest, LongerOnesWaitForTheirFlowControl) {
  Start(16);
  EXPECT_EQ(Pass(), "1010000102030405");
  EXPECT_EQ(Take(), "");
  FlowControl(0);
  EXPECT_EQ(Pass(), "21060708090A0B0C");
  EXPECT_EQ(Pass(), "220D0E0F");
  EXPECT_FALSE(sender.IsBusy());
}

TEST_F(IsoTpSenderTest, SequenceNumberGoesOnWithZeroBehindFifteen) {
  Start(6 + 17 * 7);
  Pass();
  FlowControl(0);
  std::vector<std::string> numbers;
  while (sender.IsBusy()) numbers.push_back(Pass().substr(0, 2));
  EXPECT_EQ(numbers.size(), 17U);
  EXPECT_EQ(numbers[14], "2F");
  EXPECT_EQ(numbers[15], "20");
  EXPECT_EQ(numbers[16], "21");
}

TEST_F(IsoTpSenderTest, EachBlockWaitsForItsFlowControl) {
  Start(6 + 5 * 7);
  Pass();
  FlowControl(0, 2);
  EXPECT_EQ(Pass().substr(0, 2), "21");
  EXPECT_EQ(Pass().substr(0, 2), "22");
  EXPECT_EQ(Take(), "");
  FlowControl(0, 1);
  EXPECT_EQ(Pass().substr(0, 2), "23");
  EXPECT_EQ(Take(), "");
  FlowControl(0, 8);
  EXPECT_EQ(Pass().substr(0, 2), "24");
  EXPECT_EQ(Pass().substr(0, 2), "25");
  EXPECT_FALSE(sender.IsBusy());
}

TEST_F(IsoTpSenderTest, BlockThatEndsWithTheMessageNeedsNoFlowControl) {
  Start(6 + 14);
  Pass();
  FlowControl(0, 2);
  Pass();
  Pass();
  EXPECT_FALSE(sender.IsBusy());
}

TEST_F(IsoTpSenderTest, SeparationTimeStandsBetweenConsecutiveFrames) {
  const std::pair<std::uint8_t, microseconds> rows[] = {{0xF1, microseconds(100)},
                                                        {0xF9, microseconds(900)},
                                                        {0x01, milliseconds(1)},
                                                        {0x7F, milliseconds(127)}};
  for (const auto& [st_min, gap] : rows) {
    Start(20);
    Pass();
    FlowControl(0, 0, st_min);
    EXPECT_NE(Pass(), "") << "the first one follows the flow control at once";
    EXPECT_EQ(sender.Due(), now + gap);
    Wait(gap - microseconds(1));
    EXPECT_EQ(Take(), "") << int{st_min};
    Wait(microseconds(1));
    EXPECT_NE(Pass(), "") << int{st_min};
    EXPECT_FALSE(sender.IsBusy());
  }
}

TEST_F(IsoTpSenderTest, OwnSeparationTimeTakesThePlaceOfTheReceivers) {
  parameters.separation = microseconds(300);
  Start(20);
  Pass();
  FlowControl(0, 0, 0x7F);
  Pass();
  EXPECT_EQ(sender.Due(), now + microseconds(300));
}

TEST_F(IsoTpSenderTest, MoreThan4095BytesAreEscaped) {
  Start(4095);
  EXPECT_EQ(Pass().substr(0, 4), "1FFF");
  Start(4096);
  EXPECT_EQ(Pass(), "1000000010000001");
  FlowControl(0);
  EXPECT_EQ(Pass(), "2102030405060708");
}

TEST_F(IsoTpSenderTest, MissingFlowControlIsATimeoutAfterNBs) {
  Start(20);
  Pass();
  Wait(milliseconds(999));
  EXPECT_TRUE(sender.IsBusy());
  Wait(milliseconds(1));
  EXPECT_FALSE(sender.IsBusy());
  EXPECT_EQ(Error(), IsoTpResult::kTimeoutBs);
  EXPECT_EQ(text, "sending ended after 6 of 20 bytes: no flow control within 1000 ms (N_Bs)");
  FlowControl(0);
  EXPECT_EQ(Take(), "") << "it comes too late";
}

TEST_F(IsoTpSenderTest, MissingFlowControlBetweenBlocksIsToo) {
  parameters.n_bs = milliseconds(50);
  Start(30);
  Pass();
  FlowControl(0, 1);
  Pass();
  Wait(milliseconds(50));
  EXPECT_EQ(Error(), IsoTpResult::kTimeoutBs);
  EXPECT_THAT(text, HasSubstr("after 13 of 30 bytes"));
}

TEST_F(IsoTpSenderTest, FrameThatDoesNotGetOntoTheBusIsATimeoutAfterNAs) {
  parameters.n_as = milliseconds(25);
  Start(3);
  Take();
  Wait(milliseconds(24));
  EXPECT_TRUE(sender.IsBusy());
  Wait(milliseconds(1));
  EXPECT_EQ(Error(), IsoTpResult::kTimeoutA);
  EXPECT_THAT(text, HasSubstr("N_As"));
}

TEST_F(IsoTpSenderTest, WaitFramesBringAnotherNBsUpToTheirMaximum) {
  parameters.most_waits = 2;
  Start(20);
  Pass();
  for (int i = 0; i < 2; ++i) {
    Wait(milliseconds(900));
    FlowControl(1);
    EXPECT_TRUE(sender.IsBusy());
    EXPECT_EQ(Take(), "");
  }
  FlowControl(1);
  EXPECT_EQ(Error(), IsoTpResult::kTooManyWaits);
  EXPECT_THAT(text, HasSubstr("more than 2 wait frames"));
  EXPECT_EQ(Take(), "");
}

TEST_F(IsoTpSenderTest, WaitFramesAreCountedAnewAfterAContinuation) {
  parameters.most_waits = 1;
  Start(30);
  Pass();
  FlowControl(1);
  FlowControl(0, 1);
  Pass();
  FlowControl(1);
  EXPECT_TRUE(sender.IsBusy());
  FlowControl(0);
  EXPECT_NE(Pass(), "");
}

TEST_F(IsoTpSenderTest, OverflowAndReservedStatusEndTheTransfer) {
  Start(20);
  Pass();
  FlowControl(2);
  EXPECT_EQ(Error(), IsoTpResult::kOverflow);
  EXPECT_EQ(Take(), "");
  Start(20);
  Pass();
  FlowControl(3);
  EXPECT_EQ(Error(), IsoTpResult::kInvalidStatus);
  EXPECT_THAT(text, HasSubstr("reserved status 03"));
}

TEST_F(IsoTpSenderTest, FlowControlThatNobodyWaitsForIsIgnored) {
  FlowControl(2);
  EXPECT_FALSE(sender.TakeError());
  Start(20);
  FlowControl(2);
  EXPECT_EQ(Pass(), "1014000102030405");
  FlowControl(0);
  Take();
  FlowControl(2);
  sender.FrameSent(now);
  FlowControl(2);
  EXPECT_NE(Pass(), "");
  EXPECT_FALSE(sender.TakeError());
}

TEST_F(IsoTpSenderTest, FlowControlMayOvertakeTheConfirmationOfItsFrame) {
  Start(20);
  Take();
  FlowControl(0);
  EXPECT_EQ(Pass(), "21060708090A0B0C");
}

TEST_F(IsoTpSenderTest, AnotherMessageTakesThePlaceOfTheOneUnderWay) {
  Start(20);
  Pass();
  Start(3);
  EXPECT_EQ(Pass(), "03000102");
  EXPECT_FALSE(sender.IsBusy());
  EXPECT_FALSE(sender.TakeError());
}

}  // namespace
}  // namespace korval::ecu
