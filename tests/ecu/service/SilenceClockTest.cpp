// SPDX-License-Identifier: MIT
#include <chrono>
#include <memory>

#include <gtest/gtest.h>

#include "ecu/service/SilenceClock.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::ecu {
namespace {

using std::chrono::milliseconds;

struct SilenceClockTest : public testing::Test {
  std::shared_ptr<tests::ManualEventLoop> loop = std::make_shared<tests::ManualEventLoop>();
  bool wanted = true;
  bool talking = false;
  int silences = 0;
  SilenceClock clock{loop, {[this] { return wanted; }, [this] { return talking; }, [this] { ++silences; }}};
};

TEST_F(SilenceClockTest, NoticesASilenceOnceAndTheNextWhenItIsStartedAnew) {
  clock.Start(milliseconds(100));
  loop->Advance(milliseconds(99));
  EXPECT_EQ(silences, 0);
  loop->Advance(milliseconds(1));
  EXPECT_EQ(silences, 1);
  loop->Advance(std::chrono::hours(1));
  EXPECT_EQ(silences, 1);
  clock.Start(milliseconds(100));
  loop->Advance(milliseconds(100));
  EXPECT_EQ(silences, 2);
}

TEST_F(SilenceClockTest, SilenceCountsFromTheEndOfTheLastExchange) {
  clock.Start(milliseconds(100));
  loop->Advance(milliseconds(60));
  clock.Talked();
  loop->Advance(milliseconds(99));
  EXPECT_EQ(silences, 0);
  EXPECT_EQ(clock.SinceLast(), milliseconds(99));
  loop->Advance(milliseconds(1));
  EXPECT_EQ(silences, 1);
}

TEST_F(SilenceClockTest, AnExchangeThatIsUnderWayIsNoSilence) {
  clock.Start(milliseconds(100));
  talking = true;
  loop->Advance(std::chrono::seconds(10));
  EXPECT_EQ(silences, 0);
  talking = false;
  clock.Talked();
  loop->Advance(milliseconds(100));
  EXPECT_EQ(silences, 1);
}

TEST_F(SilenceClockTest, StopsWhereNobodyWantsIt) {
  clock.Start(milliseconds(100));
  wanted = false;
  loop->Advance(milliseconds(100));
  EXPECT_EQ(loop->PendingEvents(), 0U);
  wanted = true;
  clock.Start(milliseconds(0));
  EXPECT_EQ(loop->PendingEvents(), 0U) << "0 is never";
  clock.Start(milliseconds(100));
  clock.Stop();
  EXPECT_EQ(loop->PendingEvents(), 0U);
  EXPECT_EQ(silences, 0);
}

}  // namespace
}  // namespace korval::ecu
