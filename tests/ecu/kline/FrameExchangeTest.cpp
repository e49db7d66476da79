// SPDX-License-Identifier: MIT
#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "ecu/kline/FrameExchange.h"

namespace korval::ecu {
namespace {

using Outcome = FrameExchange::Outcome;
using std::chrono::milliseconds;

constexpr char kRequest[] = "8210F12101A5";
constexpr char kAnswer[] = "83F11061010CF2";

/// The request 21 01 without gaps between its bytes. What the exchange is told of, it is told late.
class FrameExchangeTest : public testing::Test {
 protected:
  FrameExchangeTest() {
    exchange.Start(base::ByteBuffer::FromHex("2101").View(), {true, false}, timing, now);
    EXPECT_EQ(base::HexText(exchange.TakeBytes(now)), kRequest);
    exchange.Written(now);
  }

  void Hear(const std::string& hex) { exchange.BytesArrived(base::ByteBuffer::FromHex(hex).View(), now); }
  /// The program runs again after so long, and what the adapter held comes before any deadline.
  void HoldUp(milliseconds span) { now += span; }
  /// Nothing more comes: the deadlines do.
  void RunOut() {
    while (const auto deadline = exchange.Deadline()) {
      now = std::max(now, *deadline);
      exchange.TimeElapsed(now);
    }
  }

  KLineTiming timing{milliseconds(20),    milliseconds(25), milliseconds(50),   milliseconds(5000),
                     milliseconds(60000), milliseconds(55), milliseconds(5000), milliseconds(0)};
  base::Duration byte_time{milliseconds(1)};
  base::TimePoint now{milliseconds(1000)};
  EchoFilter echo{EchoFilter::Echo::kOn};
  FrameExchange exchange{{0x10, 0xF1}, byte_time, echo};
};

TEST_F(FrameExchangeTest, AFrameWhoseBytesAreAllThereCountsWheneverItIsLookedAt) {
  const std::string heard = std::string(kRequest) + kAnswer;
  for (std::size_t cut = 0; cut < heard.size(); cut += 2) {
    for (const milliseconds held_up : {milliseconds(5), milliseconds(24), milliseconds(250)}) {
      exchange.Start(base::ByteBuffer::FromHex("2101").View(), {true, false}, timing, now);
      exchange.TakeBytes(now);
      Hear(heard.substr(0, cut));
      HoldUp(held_up);
      Hear(heard.substr(cut));
      EXPECT_EQ(exchange.CurrentOutcome(), Outcome::kAnswered) << cut << ' ' << held_up.count();
      EXPECT_EQ(exchange.TakeMessages().size(), 1U) << cut << ' ' << held_up.count();
    }
  }
}

TEST_F(FrameExchangeTest, AnAnswerBehindPendingThatIsLookedAtLateCounts) {
  Hear(std::string(kRequest) + "83F1107F21789C");
  HoldUp(milliseconds(6000));
  Hear(kAnswer);
  EXPECT_EQ(exchange.CurrentOutcome(), Outcome::kAnswered);
}

TEST_F(FrameExchangeTest, ARealGapIsFoundByItsDeadline) {
  Hear(kRequest);
  Hear(std::string(kAnswer).substr(0, 6));
  ASSERT_EQ(exchange.Deadline(), now + timing.p1_max + byte_time);
  now += timing.p1_max + byte_time;
  exchange.TimeElapsed(now);
  EXPECT_STREQ(exchange.Damage(), "a truncated frame");
  Hear(std::string(kAnswer).substr(6));
  EXPECT_NE(exchange.CurrentOutcome(), Outcome::kAnswered);
  RunOut();
  EXPECT_EQ(exchange.CurrentOutcome(), Outcome::kDamaged);
}

TEST_F(FrameExchangeTest, BehindAGapTheNextByteBeginsAFrame) {
  Hear(kRequest);
  Hear(std::string(kAnswer).substr(0, 6));
  now += timing.p1_max + byte_time;
  exchange.TimeElapsed(now);
  Hear(kAnswer);
  EXPECT_EQ(exchange.CurrentOutcome(), Outcome::kAnswered);
}

TEST_F(FrameExchangeTest, BytesThatGoOnForEverDoNotPutOffTheEnd) {
  Hear(kRequest);
  const base::TimePoint end = now + milliseconds(100);
  while (now < end && exchange.CurrentOutcome() == Outcome::kUnderWay) {
    now += byte_time;
    Hear("48");  // a format byte of another standard
    exchange.TimeElapsed(now);
  }
  EXPECT_EQ(exchange.CurrentOutcome(), Outcome::kDamaged);
}

TEST_F(FrameExchangeTest, TheTimeForTheAnswerBeginsWhenTheRequestIsWritten) {
  const base::TimePoint before = *exchange.Deadline();
  HoldUp(milliseconds(200));
  exchange.Written(now);
  EXPECT_EQ(exchange.Deadline(), before + milliseconds(200));
}

TEST_F(FrameExchangeTest, WhatAnswersARequestOfTheServicesIsForThemToSay) {
  exchange.Start(base::ByteBuffer::FromHex("2101").View(), {true, false}, timing, now, false);
  exchange.TakeBytes(now);
  exchange.Written(now);
  EXPECT_FALSE(exchange.Deadline());
  Hear(std::string(kRequest) + kAnswer);
  EXPECT_EQ(exchange.TakeMessages().size(), 1U);
  EXPECT_EQ(exchange.CurrentOutcome(), Outcome::kUnderWay);
  EXPECT_FALSE(exchange.ReceivingUntil());
  Hear(std::string(kAnswer).substr(0, 6));
  EXPECT_EQ(exchange.ReceivingUntil(), now + timing.p1_max + byte_time);
  EXPECT_STREQ(exchange.Damage(), "a truncated frame");
  RunOut();
  EXPECT_EQ(exchange.CurrentOutcome(), Outcome::kUnderWay);
  EXPECT_FALSE(exchange.ReceivingUntil());
}

TEST_F(FrameExchangeTest, ARequestWithAGapAboveP4MaxIsNotSentToItsEnd) {
  timing.p4_min = milliseconds(5);
  exchange.Start(base::ByteBuffer::FromHex("2101").View(), {true, false}, timing, now);
  exchange.TakeBytes(now);
  HoldUp(milliseconds(15));
  EXPECT_EQ(base::HexText(exchange.TakeBytes(now)), "10") << "an ECU waits for 20 ms";
  HoldUp(milliseconds(24));
  EXPECT_TRUE(exchange.TakeBytes(now).empty());
  EXPECT_EQ(exchange.CurrentOutcome(), Outcome::kHeldUp);
  EXPECT_FALSE(exchange.Due());
  EXPECT_FALSE(exchange.Deadline());
}

}  // namespace
}  // namespace korval::ecu
