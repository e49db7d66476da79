// SPDX-License-Identifier: MIT
#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/ManualEventLoop.h"

namespace korval::tests {
namespace {

using namespace std::chrono_literals;

bool Never() { return false; }

TEST(ManualEventLoop, TimersFireOnceInTheOrderInWhichTheyAreDue) {
  ManualEventLoop loop;
  std::string fired;
  const auto late = loop.CreateTimer([&] { fired += 'b'; });
  const auto early = loop.CreateTimer([&] { fired += 'a'; });
  late->Start(20ms);
  early->Start(10ms);
  loop.Advance(9ms);
  EXPECT_EQ(fired, "");
  loop.Advance(1ms);
  EXPECT_EQ(fired, "a");
  loop.Advance(1s);
  EXPECT_EQ(fired, "ab");
}

TEST(ManualEventLoop, StartingAnewMovesATimerAndDestroyingStopsIt) {
  ManualEventLoop loop;
  int fired = 0;
  auto timer = loop.CreateTimer([&] { ++fired; });
  timer->Start(10ms);
  loop.Advance(9ms);
  timer->Start(10ms);
  loop.Advance(9ms);
  EXPECT_EQ(fired, 0);
  timer.reset();
  loop.Advance(1s);
  EXPECT_EQ(fired, 0);
  EXPECT_EQ(loop.PendingEvents(), 0U);
}

TEST(ManualEventLoop, ADeadlineComesOnceBehindEverythingElseOfItsTime) {
  ManualEventLoop loop;
  std::string order;
  const auto deadline = loop.CreateDeadline([&] { order += "deadline "; });
  deadline->Set(base::TimePoint(10ms));
  loop.At(10ms, [&] { loop.At(0ms, [&] { order += "delivered "; }); });
  loop.Advance(1s);
  EXPECT_EQ(order, "delivered deadline ");
  deadline->Set(base::TimePoint(10ms));
  loop.Advance(0ms);
  EXPECT_EQ(order, "delivered deadline deadline ");
}

TEST(ManualEventLoop, ADeadlineThatIsClearedOrMovedDoesNotCome) {
  ManualEventLoop loop;
  int passed = 0;
  const auto deadline = loop.CreateDeadline([&] { ++passed; });
  deadline->Set(base::TimePoint(10ms));
  deadline->Set(base::TimePoint(20ms));
  loop.Advance(19ms);
  deadline->Clear();
  loop.Advance(1s);
  EXPECT_EQ(passed, 0);
  EXPECT_EQ(loop.PendingEvents(), 0U);
}

TEST(ManualEventLoop, AWaitEndsAtItsDeadlineOrAsSoonAsItIsDone) {
  ManualEventLoop loop;
  EXPECT_FALSE(loop.RunUntil(base::TimePoint(5ms), Never));
  EXPECT_EQ(loop.Now(), base::TimePoint(5ms));
  bool done = false;
  loop.At(3ms, [&] { done = true; });
  EXPECT_TRUE(loop.RunUntil(base::TimePoint(1s), [&] { return done; }));
  EXPECT_EQ(loop.Now(), base::TimePoint(8ms));
}

TEST(ManualEventLoop, AnOuterWaitEndsAfterTheInnerOne) {
  ManualEventLoop loop;
  std::string order;
  bool outer_done = false;
  loop.At(1ms, [&] {
    loop.At(1ms, [&] { outer_done = true; });
    loop.RunUntil(loop.Now() + 10ms, Never);
    order += "inner ";
  });
  EXPECT_TRUE(loop.RunUntil(base::TimePoint(1s), [&] { return outer_done; }));
  order += "outer";
  EXPECT_EQ(order, "inner outer");
}

}  // namespace
}  // namespace korval::tests
