// SPDX-License-Identifier: MIT
#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "ecu/kwp2000/Kwp2000Dialect.h"
#include "ecu/service/Exchange.h"

namespace korval::ecu {
namespace {

using base::ByteBuffer;
using std::chrono::milliseconds;
using State = Exchange::State;

constexpr ExchangeTiming kTiming{milliseconds(50), milliseconds(5000), milliseconds(12000)};

constexpr base::TimePoint At(int time_ms) { return base::TimePoint(milliseconds(time_ms)); }

Exchange Begin(const std::string& request) {
  return {ByteBuffer::FromHex(request).View(), Kwp2000(), kTiming, At(1000)};
}

State After(const std::string& request, const std::string& answer) {
  Exchange exchange = Begin(request);
  exchange.MessageArrived(ByteBuffer::FromHex(answer).View(), At(1010));
  return exchange.CurrentState();
}

TEST(ExchangeTest, PositiveAnswerEndsIt) {
  Exchange exchange = Begin("2101");
  EXPECT_EQ(exchange.CurrentState(), State::kWaiting);
  EXPECT_EQ(exchange.Deadline(), At(1050));
  exchange.MessageArrived(ByteBuffer::FromHex("6101AB").View(), At(1010));
  EXPECT_EQ(exchange.CurrentState(), State::kPositive);
  EXPECT_EQ(exchange.Answer().ToHex(), "6101AB");
}

TEST(ExchangeTest, NegativeAnswerEndsItAndIsKept) {
  Exchange exchange = Begin("2101");
  exchange.MessageArrived(ByteBuffer::FromHex("7F2131").View(), At(1010));
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
  Exchange exchange(ByteBuffer::FromHex("2101").View(), Kwp2000(), timing, At(0));
  exchange.MessageArrived(busy.View(), At(30));
  EXPECT_EQ(exchange.Deadline(), At(130));
  EXPECT_FALSE(exchange.TakeRepeat());
  exchange.TimeElapsed(At(130));
  EXPECT_TRUE(exchange.TakeRepeat());
  EXPECT_FALSE(exchange.TakeRepeat());
  EXPECT_EQ(exchange.Deadline(), At(180));
  exchange.MessageArrived(busy.View(), At(160));
  exchange.TimeElapsed(At(260));
  EXPECT_TRUE(exchange.TakeRepeat());
  exchange.MessageArrived(busy.View(), At(290));
  EXPECT_EQ(exchange.CurrentState(), State::kNegative);
}

TEST(ExchangeTest, AnswerToARepeatedRequestEndsIt) {
  ExchangeTiming timing = kTiming;
  timing.busy_repeat = milliseconds(100);
  timing.busy_cap = milliseconds(250);
  Exchange exchange(ByteBuffer::FromHex("2101").View(), Kwp2000(), timing, At(0));
  exchange.MessageArrived(ByteBuffer::FromHex("7F2121").View(), At(30));
  exchange.TimeElapsed(At(130));
  EXPECT_TRUE(exchange.TakeRepeat());
  exchange.MessageArrived(ByteBuffer::FromHex("6101AB").View(), At(140));
  EXPECT_EQ(exchange.CurrentState(), State::kPositive);
}

TEST(ExchangeTest, RequestIsSentAgainAsOftenAsItMayBe) {
  ExchangeTiming timing = kTiming;
  timing.repeats = 2;
  Exchange exchange(ByteBuffer::FromHex("2101").View(), Kwp2000(), timing, At(0));
  exchange.TimeElapsed(At(50));
  EXPECT_TRUE(exchange.TakeRepeat());
  EXPECT_EQ(exchange.Deadline(), At(100));
  EXPECT_TRUE(exchange.AskAgain(At(70)));
  EXPECT_EQ(exchange.Deadline(), At(120));
  EXPECT_FALSE(exchange.AskAgain(At(80)));
  exchange.TimeElapsed(At(120));
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
  exchange.LinkBusy(At(3000));
  EXPECT_EQ(exchange.Deadline(), At(3050));
  exchange.LinkBusy(At(60000));
  EXPECT_EQ(exchange.Deadline(), At(60050)) << "a transfer that progresses is not cut";
}

TEST(ExchangeTest, AnswerThatIsComingInPutsTheEndOffAsLongAsItComes) {
  Exchange exchange = Begin("2101");
  exchange.Receiving(At(1060));
  exchange.TimeElapsed(At(1050));
  EXPECT_EQ(exchange.CurrentState(), State::kWaiting);
  EXPECT_EQ(exchange.Deadline(), At(1060));
  exchange.Receiving(std::nullopt);
  EXPECT_EQ(exchange.Deadline(), At(1050));
}

TEST(ExchangeTest, CapCountsFromWhenTheRequestIsOut) {
  Exchange exchange = Begin("3101");
  const ByteBuffer pending{0x7F, 0x31, 0x78};
  exchange.LinkBusy(At(2000));
  for (const int time_ms : {2040, 6000, 10000, 13900}) exchange.MessageArrived(pending.View(), At(time_ms));
  EXPECT_EQ(exchange.Deadline(), At(14000));
}

TEST(ExchangeTest, PausesBeforeABusyEcuIsAskedAgain) {
  ExchangeTiming timing = kTiming;
  timing.busy_repeat = milliseconds(100);
  timing.busy_cap = milliseconds(250);
  Exchange exchange(ByteBuffer::FromHex("2101").View(), Kwp2000(), timing, At(0));
  EXPECT_FALSE(exchange.IsPausing());
  exchange.MessageArrived(ByteBuffer::FromHex("7F2121").View(), At(30));
  EXPECT_TRUE(exchange.IsPausing());
  exchange.TimeElapsed(At(130));
  EXPECT_FALSE(exchange.IsPausing());
}

TEST(ExchangeTest, SilenceEndsItAtTheDeadlineAndNotBefore) {
  Exchange exchange = Begin("2101");
  exchange.TimeElapsed(At(1049));
  EXPECT_EQ(exchange.CurrentState(), State::kWaiting);
  exchange.TimeElapsed(At(1050));
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
  exchange.MessageArrived(ByteBuffer::FromHex(GetParam().answer).View(), At(1040));
  EXPECT_EQ(exchange.CurrentState(), State::kWaiting);
  EXPECT_EQ(exchange.Deadline(), At(1050));
  exchange.TimeElapsed(At(1050));
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
  exchange.MessageArrived(ByteBuffer{0x7E}.View(), At(1010));
  exchange.MessageArrived(ByteBuffer::FromHex("6101").View(), At(1020));
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
  exchange.MessageArrived(pending.View(), At(1040));
  EXPECT_EQ(exchange.Deadline(), At(6040));
  exchange.MessageArrived(pending.View(), At(6000));
  EXPECT_EQ(exchange.Deadline(), At(11000));
  exchange.MessageArrived(pending.View(), At(10000));
  EXPECT_EQ(exchange.Deadline(), At(13000));
  exchange.MessageArrived(pending.View(), At(12900));
  EXPECT_EQ(exchange.Deadline(), At(13000));
  EXPECT_EQ(exchange.CurrentState(), State::kWaiting);
  exchange.TimeElapsed(At(13000));
  EXPECT_EQ(exchange.CurrentState(), State::kSilent);
}

TEST(ExchangeTest, PendingOfAnotherServiceGivesNoTime) {
  Exchange exchange = Begin("3101");
  exchange.MessageArrived(ByteBuffer{0x7F, 0x21, 0x78}.View(), At(1040));
  EXPECT_EQ(exchange.Deadline(), At(1050));
}

TEST(ExchangeTest, NothingChangesItOnceItHasEnded) {
  Exchange exchange = Begin("2101");
  exchange.MessageArrived(ByteBuffer::FromHex("6101AB").View(), At(1010));
  exchange.MessageArrived(ByteBuffer::FromHex("6101CD").View(), At(1020));
  exchange.TimeElapsed(At(9000));
  EXPECT_EQ(exchange.CurrentState(), State::kPositive);
  EXPECT_EQ(exchange.Answer().ToHex(), "6101AB");
}

TEST(ExchangeTest, EmptyMessageIsNone) {
  Exchange exchange = Begin("2101");
  exchange.MessageArrived({}, At(1010));
  exchange.TimeElapsed(At(1050));
  EXPECT_EQ(exchange.CurrentState(), State::kSilent);
}

}  // namespace
}  // namespace korval::ecu
