// SPDX-License-Identifier: MIT
#include <memory>
#include <optional>
#include <string>

#include "QtTest.h"
#include "platform/QtEventLoop.h"

namespace korval::platform {
namespace {

using std::chrono::hours;
using std::chrono::microseconds;
using std::chrono::milliseconds;

class QtEventLoopTest : public QtTest {};

TEST_F(QtEventLoopTest, FiresATimerFromTheLoopAndNotFromStart) {
  int fired = 0;
  const auto timer = loop_.CreateTimer([&] { ++fired; });
  timer->Start(microseconds(0));
  EXPECT_EQ(fired, 0);
  EXPECT_TRUE(RunUntil([&] { return fired > 0; }));
}

TEST_F(QtEventLoopTest, FiresATimerOnceAndNotBeforeItsDelay) {
  int fired = 0;
  base::TimePoint fired_at{0};
  const auto timer = loop_.CreateTimer([&] {
    ++fired;
    fired_at = loop_.Now();
  });
  const base::TimePoint start = loop_.Now();
  timer->Start(microseconds(1500));
  EXPECT_FALSE(loop_.RunUntil(start + milliseconds(20), [] { return false; }));
  EXPECT_EQ(fired, 1);
  EXPECT_GE(fired_at - start, microseconds(1500));
}

// Rounded up to a whole millisecond it would never be the first one.
TEST_F(QtEventLoopTest, FiresATimerOfAPartOfAMillisecondBeforeAnEarlierOneOfAWhole) {
  bool long_fired = false;
  bool short_was_first = false;
  const auto long_timer = loop_.CreateTimer([&] { long_fired = true; });
  const auto short_timer = loop_.CreateTimer([&] { short_was_first = short_was_first || !long_fired; });
  // A machine that is busy may hold up a round.
  for (int round = 0; round < 100 && !short_was_first; ++round) {
    long_fired = false;
    long_timer->Start(milliseconds(1));
    short_timer->Start(microseconds(100));
    ASSERT_TRUE(RunUntil([&] { return long_fired; }));
  }
  EXPECT_TRUE(short_was_first);
}

TEST_F(QtEventLoopTest, FiresATimerOfAPartOfAMillisecondNotBeforeItsDelay) {
  base::TimePoint fired_at{0};
  const auto timer = loop_.CreateTimer([&] { fired_at = loop_.Now(); });
  const base::TimePoint start = loop_.Now();
  timer->Start(microseconds(700));
  EXPECT_TRUE(RunUntil([&] { return fired_at.count() != 0; }));
  EXPECT_GE(fired_at - start, microseconds(700));
}

TEST_F(QtEventLoopTest, StartsARunningTimerAnew) {
  int fired = 0;
  const auto timer = loop_.CreateTimer([&] { ++fired; });
  timer->Start(microseconds(0));
  timer->Start(hours(1));
  RunQueuedEvents();
  EXPECT_EQ(fired, 0);
}

TEST_F(QtEventLoopTest, SilencesATimerThatIsStoppedOrDestroyed) {
  int fired = 0;
  const auto stopped = loop_.CreateTimer([&] { ++fired; });
  auto destroyed = loop_.CreateTimer([&] { ++fired; });
  stopped->Start(microseconds(0));
  destroyed->Start(microseconds(0));
  stopped->Stop();
  destroyed.reset();
  RunQueuedEvents();
  EXPECT_EQ(fired, 0);
}

TEST_F(QtEventLoopTest, LetsATimerBeDestroyedByItsOwnFiring) {
  std::unique_ptr<base::Timer> timer;
  std::string seen;
  // Held by the function alone, so that it goes when the function goes.
  const auto text = std::make_shared<std::string>("still here");
  timer = loop_.CreateTimer([&timer, &seen, text] {
    timer.reset();
    seen = *text;
  });
  timer->Start(microseconds(0));
  EXPECT_TRUE(RunUntil([&] { return !seen.empty(); }));
  EXPECT_EQ(seen, "still here");
}

TEST_F(QtEventLoopTest, EndsAWaitAtItsDeadline) {
  const base::TimePoint deadline = loop_.Now() + milliseconds(5);
  EXPECT_FALSE(loop_.RunUntil(deadline, [] { return false; }));
  EXPECT_GE(loop_.Now(), deadline);
}

TEST_F(QtEventLoopTest, RunsNoEventForAWaitThatIsDoneAlready) {
  int fired = 0;
  const auto timer = loop_.CreateTimer([&] { ++fired; });
  timer->Start(microseconds(0));
  EXPECT_TRUE(loop_.RunUntil(loop_.Now() - milliseconds(1), [] { return true; }));
  EXPECT_EQ(fired, 0);
}

TEST_F(QtEventLoopTest, WaitsForADeadlineThatNeverComes) {
  bool fired = false;
  const auto timer = loop_.CreateTimer([&] { fired = true; });
  timer->Start(microseconds(0));
  EXPECT_TRUE(loop_.RunUntil(base::TimePoint::max(), [&] { return fired; }));
}

TEST_F(QtEventLoopTest, EndsAnOuterWaitAfterTheInnerOne) {
  std::string order;
  bool outer_done = false;
  bool inner_done = false;
  const auto finish_outer = loop_.CreateTimer([&] { outer_done = true; });
  const auto finish_inner = loop_.CreateTimer([&] { inner_done = true; });
  const auto wait_inside = loop_.CreateTimer([&] {
    finish_outer->Start(microseconds(0));
    EXPECT_TRUE(RunUntil([&] { return outer_done; }));
    finish_inner->Start(microseconds(0));
    EXPECT_TRUE(RunUntil([&] { return inner_done; }));
    order += "inner ";
  });
  wait_inside->Start(microseconds(0));
  EXPECT_TRUE(RunUntil([&] { return outer_done; }));
  order += "outer";
  EXPECT_EQ(order, "inner outer");
}

TEST_F(QtEventLoopTest, GoesOnWaitingAfterTheApplicationWasToldToQuit) {
  std::optional<bool> reached;
  bool fired = false;
  const auto later = loop_.CreateTimer([&] { fired = true; });
  const auto waiting = loop_.CreateTimer([&] {
    QCoreApplication::quit();
    later->Start(milliseconds(2));
    reached = RunUntil([&] { return fired; });
  });
  waiting->Start(microseconds(0));
  QCoreApplication::exec();
  EXPECT_EQ(reached, true);
}

}  // namespace
}  // namespace korval::platform
