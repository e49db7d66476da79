// SPDX-License-Identifier: MIT
#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "ecu/kwp2000/Exchange.h"

namespace korval::ecu {
namespace {

using base::ByteBuffer;
using std::chrono::milliseconds;
using State = Exchange::State;

constexpr ExchangeTiming kTiming{milliseconds(50), milliseconds(5000), milliseconds(12000)};

Exchange Begin(const std::string& request) {
  return {ByteBuffer::FromHex(request).View(), kTiming, milliseconds(1000)};
}

State After(const std::string& request, const std::string& answer) {
  Exchange exchange = Begin(request);
  exchange.MessageArrived(ByteBuffer::FromHex(answer).View(), milliseconds(1010));
  return exchange.CurrentState();
}

TEST(ExchangeTest, PositiveAnswerEndsIt) {
  Exchange exchange = Begin("2101");
  EXPECT_EQ(exchange.CurrentState(), State::kWaiting);
  EXPECT_EQ(exchange.Deadline(), milliseconds(1050));
  exchange.MessageArrived(ByteBuffer::FromHex("6101AB").View(), milliseconds(1010));
  EXPECT_EQ(exchange.CurrentState(), State::kPositive);
  EXPECT_EQ(exchange.Answer().ToHex(), "6101AB");
}

TEST(ExchangeTest, NegativeAnswerEndsItAndIsKept) {
  Exchange exchange = Begin("2101");
  exchange.MessageArrived(ByteBuffer::FromHex("7F2131").View(), milliseconds(1010));
  EXPECT_EQ(exchange.CurrentState(), State::kNegative);
  EXPECT_EQ(exchange.Answer().ToHex(), "7F2131");
}

TEST(ExchangeTest, BusyIsANegativeAnswerWhereItIsNotToBeRepeated) {
  EXPECT_EQ(After("2101", "7F2121"), State::kNegative);
}

TEST(ExchangeTest, BusyRepeatsTheRequestUntilTheCap) {
  ExchangeTiming timing = kTiming;
  timing.busy_repeat = milliseconds(100);
  timing.busy_cap = milliseconds(250);
  const ByteBuffer busy = ByteBuffer::FromHex("7F2121");
  Exchange exchange(ByteBuffer::FromHex("2101").View(), timing, milliseconds(0));
  exchange.MessageArrived(busy.View(), milliseconds(30));
  EXPECT_EQ(exchange.Deadline(), milliseconds(130));
  EXPECT_FALSE(exchange.TakeRepeat());
  exchange.TimeElapsed(milliseconds(130));
  EXPECT_TRUE(exchange.TakeRepeat());
  EXPECT_FALSE(exchange.TakeRepeat());
  EXPECT_EQ(exchange.Deadline(), milliseconds(180));
  exchange.MessageArrived(busy.View(), milliseconds(160));
  exchange.TimeElapsed(milliseconds(260));
  EXPECT_TRUE(exchange.TakeRepeat());
  exchange.MessageArrived(busy.View(), milliseconds(290));
  EXPECT_EQ(exchange.CurrentState(), State::kNegative);
}

TEST(ExchangeTest, AnswerToARepeatedRequestEndsIt) {
  ExchangeTiming timing = kTiming;
  timing.busy_repeat = milliseconds(100);
  timing.busy_cap = milliseconds(250);
  Exchange exchange(ByteBuffer::FromHex("2101").View(), timing, milliseconds(0));
  exchange.MessageArrived(ByteBuffer::FromHex("7F2121").View(), milliseconds(30));
  exchange.TimeElapsed(milliseconds(130));
  EXPECT_TRUE(exchange.TakeRepeat());
  exchange.MessageArrived(ByteBuffer::FromHex("6101AB").View(), milliseconds(140));
  EXPECT_EQ(exchange.CurrentState(), State::kPositive);
}

TEST(ExchangeTest, RequestIsSentAgainAsOftenAsItMayBe) {
  ExchangeTiming timing = kTiming;
  timing.repeats = 2;
  Exchange exchange(ByteBuffer::FromHex("2101").View(), timing, milliseconds(0));
  exchange.TimeElapsed(milliseconds(50));
  EXPECT_TRUE(exchange.TakeRepeat());
  EXPECT_EQ(exchange.Deadline(), milliseconds(100));
  EXPECT_TRUE(exchange.AskAgain(milliseconds(70)));
  EXPECT_EQ(exchange.Deadline(), milliseconds(120));
  EXPECT_FALSE(exchange.AskAgain(milliseconds(80)));
  exchange.TimeElapsed(milliseconds(120));
  EXPECT_FALSE(exchange.TakeRepeat());
  EXPECT_EQ(exchange.CurrentState(), State::kSilent);
}

TEST(ExchangeTest, RequestToWhichNoAnswerComesIsDoneWhenItIsOut) {
  Exchange exchange = Begin("2101");
  exchange.Sent();
  EXPECT_EQ(exchange.CurrentState(), State::kWaiting);
  Exchange unanswered = Begin("2101");
  unanswered.AwaitNoAnswer();
  unanswered.Sent();
  EXPECT_EQ(unanswered.CurrentState(), State::kPositive);
  EXPECT_TRUE(unanswered.Answer().Empty());
}

TEST(ExchangeTest, LinkThatIsBusyPutsTheDeadlineOffEvenBeyondTheCap) {
  Exchange exchange = Begin("2101");
  exchange.LinkBusy(milliseconds(3000));
  EXPECT_EQ(exchange.Deadline(), milliseconds(3050));
  exchange.LinkBusy(milliseconds(60000));
  EXPECT_EQ(exchange.Deadline(), milliseconds(60050)) << "a transfer that progresses is not cut";
}

TEST(ExchangeTest, SilenceEndsItAtTheDeadlineAndNotBefore) {
  Exchange exchange = Begin("2101");
  exchange.TimeElapsed(milliseconds(1049));
  EXPECT_EQ(exchange.CurrentState(), State::kWaiting);
  exchange.TimeElapsed(milliseconds(1050));
  EXPECT_EQ(exchange.CurrentState(), State::kSilent);
  EXPECT_TRUE(exchange.Answer().Empty());
}

struct Row {
  const char* request;
  const char* answer;
};

class ForeignTest : public testing::TestWithParam<Row> {};

TEST_P(ForeignTest, IsDiscardedWithoutMoreTime) {
  Exchange exchange = Begin(GetParam().request);
  exchange.MessageArrived(ByteBuffer::FromHex(GetParam().answer).View(), milliseconds(1040));
  EXPECT_EQ(exchange.CurrentState(), State::kWaiting);
  EXPECT_EQ(exchange.Deadline(), milliseconds(1050));
  exchange.TimeElapsed(milliseconds(1050));
  EXPECT_EQ(exchange.CurrentState(), State::kForeign);
  EXPECT_EQ(exchange.Answer().ToHex(), GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(Rows, ForeignTest,
                         testing::Values(Row{"2101", "7E"}, Row{"2101", "6102AB"}, Row{"2101", "7F2231"},
                                         Row{"2101", "7F21"}, Row{"2101", "7F"}, Row{"2101", "2101"},
                                         Row{"3B1000", "7B11"}, Row{"30010700", "7002"},
                                         Row{"22F190", "62F191"}, Row{"2EF19000", "6EF090"},
                                         Row{"2F1122", "6F1133"}));

TEST(ExchangeTest, OwnAnswerBehindAForeignOneIsTaken) {
  Exchange exchange = Begin("2101");
  exchange.MessageArrived(ByteBuffer{0x7E}.View(), milliseconds(1010));
  exchange.MessageArrived(ByteBuffer::FromHex("6101").View(), milliseconds(1020));
  EXPECT_EQ(exchange.CurrentState(), State::kPositive);
  EXPECT_EQ(exchange.Answer().ToHex(), "6101");
}

TEST(ExchangeTest, AnswersThatRepeatNoIdentifierAreKnownByTheirService) {
  EXPECT_EQ(After("1A90", "5A41"), State::kPositive);
  EXPECT_EQ(After("17FF00", "5700"), State::kPositive);
  EXPECT_EQ(After("2101", "61"), State::kPositive);
  EXPECT_EQ(After("22F190", "62F1"), State::kPositive);
  EXPECT_EQ(After("21", "6101"), State::kPositive);
  EXPECT_EQ(After("81", "C1EF8F"), State::kPositive);
}

TEST(ExchangeTest, EachPendingGivesMoreTimeUpToTheCap) {
  Exchange exchange = Begin("3101");
  const ByteBuffer pending{0x7F, 0x31, 0x78};
  exchange.MessageArrived(pending.View(), milliseconds(1040));
  EXPECT_EQ(exchange.Deadline(), milliseconds(6040));
  exchange.MessageArrived(pending.View(), milliseconds(6000));
  EXPECT_EQ(exchange.Deadline(), milliseconds(11000));
  exchange.MessageArrived(pending.View(), milliseconds(10000));
  EXPECT_EQ(exchange.Deadline(), milliseconds(13000));
  exchange.MessageArrived(pending.View(), milliseconds(12900));
  EXPECT_EQ(exchange.Deadline(), milliseconds(13000));
  EXPECT_EQ(exchange.CurrentState(), State::kWaiting);
  exchange.TimeElapsed(milliseconds(13000));
  EXPECT_EQ(exchange.CurrentState(), State::kSilent);
}

TEST(ExchangeTest, PendingOfAnotherServiceGivesNoTime) {
  Exchange exchange = Begin("3101");
  exchange.MessageArrived(ByteBuffer{0x7F, 0x21, 0x78}.View(), milliseconds(1040));
  EXPECT_EQ(exchange.Deadline(), milliseconds(1050));
}

TEST(ExchangeTest, NothingChangesItOnceItHasEnded) {
  Exchange exchange = Begin("2101");
  exchange.MessageArrived(ByteBuffer::FromHex("6101AB").View(), milliseconds(1010));
  exchange.MessageArrived(ByteBuffer::FromHex("6101CD").View(), milliseconds(1020));
  exchange.TimeElapsed(milliseconds(9000));
  EXPECT_EQ(exchange.CurrentState(), State::kPositive);
  EXPECT_EQ(exchange.Answer().ToHex(), "6101AB");
}

TEST(ExchangeTest, EmptyMessageIsNone) {
  Exchange exchange = Begin("2101");
  exchange.MessageArrived({}, milliseconds(1010));
  exchange.TimeElapsed(milliseconds(1050));
  EXPECT_EQ(exchange.CurrentState(), State::kSilent);
}

}  // namespace
}  // namespace korval::ecu
