// SPDX-License-Identifier: MIT
#include <chrono>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ecu/isotp/IsoTpReceiver.h"

namespace korval::ecu {
namespace {

using base::ByteBuffer;
using base::TimePoint;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using testing::HasSubstr;

class IsoTpReceiverTest : public testing::Test {
 protected:
  void Arrive(const std::string& hex) {
    const ByteBuffer bytes = ByteBuffer::FromHex(hex);
    const auto pdu = IsoTpPdu::Read(bytes.View(), parameters.ReceiveCapacity());
    ASSERT_TRUE(pdu) << hex;
    receiver.FrameArrived(*pdu, now);
  }
  /// The flow control that is due in hexadecimal, confirmed; "" when none is.
  std::string Pass() {
    const auto frame = receiver.TakeFrame(now);
    receiver.FrameSent(now);
    return frame ? base::HexText(frame->View()) : "";
  }
  std::string Message() {
    const auto message = receiver.TakeMessage();
    return message ? message->ToHex() : "";
  }
  void Wait(microseconds span) {
    now += span;
    receiver.TimeElapsed(now);
  }
  IsoTpResult Error() {
    const auto error = receiver.TakeError();
    EXPECT_TRUE(error);
    text = error ? error->text : "";
    return error ? error->result : IsoTpResult::kOverflow;
  }

  IsoTpParameters parameters;
  IsoTpReceiver receiver{parameters};
  TimePoint now{milliseconds(5000)};
  std::string text;
};

TEST_F(IsoTpReceiverTest, SingleFrameIsAMessage) {
  Arrive("0361010A55555555");
  EXPECT_EQ(Message(), "61010A");
  EXPECT_EQ(Message(), "") << "once";
  EXPECT_EQ(Pass(), "");
  EXPECT_FALSE(receiver.Deadline());
}

TEST_F(IsoTpReceiverTest, FirstFrameGetsItsFlowControlAtOnce) {
  Arrive("1010000102030405");
  EXPECT_EQ(Pass(), "300000");
  Arrive("21060708090A0B0C");
  EXPECT_EQ(Message(), "");
  Arrive("220D0E0F55555555");
  EXPECT_EQ(Message(), "000102030405060708090A0B0C0D0E0F");
  EXPECT_FALSE(receiver.IsBusy());
}

TEST_F(IsoTpReceiverTest, FlowControlAsksForBlockSizeAndSeparation) {
  parameters.block_size = 2;
  parameters.st_min = microseconds(500);
  Arrive("102B000102030405");
  EXPECT_EQ(Pass(), "3002F5");
  Arrive("2106070809101112");
  EXPECT_EQ(Pass(), "");
  Arrive("2213141516171819");
  EXPECT_EQ(Pass(), "3002F5");
  Arrive("2320212223242526");
  Arrive("2427282930313233");
  EXPECT_EQ(Pass(), "3002F5");
  Arrive("2534353637383940");
  EXPECT_EQ(Pass(), "");
  Arrive("264142");
  EXPECT_EQ(Pass(), "") << "the message is complete";
  EXPECT_EQ(Message().size(), 2 * 0x2BU);
}

TEST_F(IsoTpReceiverTest, FlowControlWaitsForNBr) {
  parameters.n_br = milliseconds(20);
  Arrive("1010000102030405");
  EXPECT_EQ(Pass(), "");
  EXPECT_EQ(receiver.Due(), now + milliseconds(20));
  Wait(milliseconds(20));
  EXPECT_EQ(Pass(), "300000");
}

TEST_F(IsoTpReceiverTest, WrongSequenceNumbersEndTheMessage) {
  for (const char* wrong : {"20", "22", "2F"}) {
    Arrive("1010000102030405");
    Pass();
    Arrive(std::string(wrong) + "060708090A0B0C");
    EXPECT_EQ(Error(), IsoTpResult::kWrongSequence) << wrong;
    EXPECT_THAT(text, HasSubstr("came instead of 1"));
    EXPECT_THAT(text, HasSubstr("after 6 of 16 bytes"));
    Arrive("21060708090A0B0C");
    EXPECT_FALSE(receiver.TakeError());
    EXPECT_EQ(Message(), "");
  }
}

TEST_F(IsoTpReceiverTest, DoubledConsecutiveFrameEndsTheMessage) {
  Arrive("101E000102030405");
  Pass();
  Arrive("21060708090A0B0C");
  Arrive("21060708090A0B0C");
  EXPECT_EQ(Error(), IsoTpResult::kWrongSequence);
}

TEST_F(IsoTpReceiverTest, MissingConsecutiveFrameIsATimeoutAfterNCr) {
  parameters.n_cr = milliseconds(150);
  Arrive("1010000102030405");
  Pass();
  Wait(milliseconds(149));
  Arrive("21060708090A0B0C");
  Wait(milliseconds(149));
  EXPECT_TRUE(receiver.IsBusy());
  Wait(milliseconds(1));
  EXPECT_EQ(Error(), IsoTpResult::kTimeoutCr);
  EXPECT_EQ(text, "reception ended after 13 of 16 bytes: no consecutive frame within 150 ms (N_Cr)");
  EXPECT_FALSE(receiver.Deadline());
}

TEST_F(IsoTpReceiverTest, FlowControlThatDoesNotGetOntoTheBusIsATimeoutAfterNAr) {
  parameters.n_ar = milliseconds(25);
  Arrive("1010000102030405");
  ASSERT_TRUE(receiver.TakeFrame(now));
  Wait(milliseconds(25));
  EXPECT_EQ(Error(), IsoTpResult::kTimeoutA);
  EXPECT_THAT(text, HasSubstr("N_Ar"));
}

TEST_F(IsoTpReceiverTest, MessageThatIsTooLongIsAnsweredWithOverflow) {
  parameters.n_br = milliseconds(20);
  Arrive("1000000010000001");
  EXPECT_FALSE(receiver.TakeError()) << "whoever hears of it may end the transfer";
  Wait(milliseconds(20));
  EXPECT_EQ(Pass(), "320000");
  EXPECT_EQ(Error(), IsoTpResult::kTooLong);
  EXPECT_FALSE(receiver.IsBusy());
  Arrive("2102030405060708");
  EXPECT_EQ(Message(), "");
}

TEST_F(IsoTpReceiverTest, EscapedLengthIsTakenUpToTheLimit) {
  parameters.longest_message = 4096;
  Arrive("1000000010000001");
  EXPECT_EQ(Pass(), "300000");
  for (int i = 1; i <= 585; ++i) {
    Arrive("2" + std::string(1, "0123456789ABCDEF"[i % 16]) + "00000000000000");
  }
  EXPECT_EQ(Message().size(), 2 * 4096U);
}

// The table of unexpected PDUs: receiving a message.
TEST_F(IsoTpReceiverTest, SingleFrameInTheMiddleTakesThePlaceOfTheMessage) {
  Arrive("1010000102030405");
  Pass();
  Arrive("03613311");
  EXPECT_EQ(Message(), "613311");
  EXPECT_FALSE(receiver.IsBusy());
  EXPECT_FALSE(receiver.TakeError());
}

TEST_F(IsoTpReceiverTest, FirstFrameInTheMiddleStartsAnew) {
  Arrive("1010000102030405");
  Pass();
  Arrive("21060708090A0B0C");
  Arrive("1009616263646566");
  EXPECT_EQ(Pass(), "300000");
  Arrive("21676869");
  EXPECT_EQ(Message(), "616263646566676869");
}

TEST_F(IsoTpReceiverTest, ConsecutiveFramesThatNobodyWaitsForAreIgnored) {
  Arrive("21060708090A0B0C");
  EXPECT_FALSE(receiver.IsBusy());
  parameters.n_br = milliseconds(20);
  Arrive("1010000102030405");
  Arrive("22060708090A0B0C");
  EXPECT_FALSE(receiver.TakeError()) << "the flow control was not sent yet";
  Wait(milliseconds(20));
  EXPECT_EQ(Pass(), "300000");
}

TEST_F(IsoTpReceiverTest, ConsecutiveFrameCutShortIsIgnored) {
  Arrive("1010000102030405");
  Pass();
  Arrive("210607080910");
  EXPECT_TRUE(receiver.IsBusy());
  Arrive("21060708090A0B0C");
  Arrive("220D0E");
  EXPECT_EQ(Message(), "");
  Arrive("220D0E0F");
  EXPECT_NE(Message(), "");
}

TEST_F(IsoTpReceiverTest, ConsecutiveFrameMayOvertakeTheConfirmationOfTheFlowControl) {
  Arrive("1009000102030405");
  ASSERT_TRUE(receiver.TakeFrame(now));
  Arrive("21060708");
  EXPECT_EQ(Message(), "000102030405060708");
}

TEST_F(IsoTpReceiverTest, BehindAnAddressByteFramesHoldOneByteLess) {
  parameters.receive_target = 0xF1;
  Arrive("10070001020304");
  EXPECT_EQ(Pass(), "300000");
  Arrive("210506");
  EXPECT_EQ(Message(), "00010203040506");
}

}  // namespace
}  // namespace korval::ecu
