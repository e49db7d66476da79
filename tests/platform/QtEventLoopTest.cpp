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

class QtEventLoopTest : public QtTest {
 protected:
  /// The computer does something else for so long.
  void HoldUp(base::Duration span) {
    const base::TimePoint end = loop_.Now() + span;
    while (loop_.Now() < end) {
    }
  }
};

TEST_F(QtEventLoopTest, FiresATimerFromTheLoopAndNotFromStart) {
  int fired = 0;
  const auto timer = loop_.CreateTimer([&] { ++fired; });
  timer->Start(microseconds(0));
  EXPECT_EQ(fired, 0);
  EXPECT_TRUE(RunUntil([&] { return fired > 0; }));
}

TEST_F(QtEventLoopTest, FiresATimerOnceAndNotBeforeItsDelay) {
  int fired = 0;
  base::TimePoint fired_at{};
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
  base::TimePoint fired_at{};
  const auto timer = loop_.CreateTimer([&] { fired_at = loop_.Now(); });
  const base::TimePoint start = loop_.Now();
  timer->Start(microseconds(700));
  EXPECT_TRUE(RunUntil([&] { return fired_at != base::TimePoint{}; }));
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

TEST_F(QtEventLoopTest, ADeadlineComesOnceAndNotBeforeItsTime) {
  int passed = 0;
  base::TimePoint passed_at{};
  const auto deadline = loop_.CreateDeadline([&] {
    ++passed;
    passed_at = loop_.Now();
  });
  const base::TimePoint due = loop_.Now() + microseconds(25300);
  deadline->Set(due);
  deadline->Set(due);
  EXPECT_EQ(passed, 0);
  ASSERT_TRUE(RunUntil([&] { return passed > 0; }));
  EXPECT_GE(passed_at, due);
  EXPECT_FALSE(loop_.RunUntil(loop_.Now() + milliseconds(20), [] { return false; }));
  EXPECT_EQ(passed, 1);
}

TEST_F(QtEventLoopTest, ADeadlineThatIsClearedMovedOrDestroyedDoesNotCome) {
  int passed = 0;
  const auto cleared = loop_.CreateDeadline([&] { ++passed; });
  const auto moved = loop_.CreateDeadline([&] { ++passed; });
  auto destroyed = loop_.CreateDeadline([&] { ++passed; });
  for (base::Deadline* deadline : {cleared.get(), moved.get(), destroyed.get()}) deadline->Set(loop_.Now());
  cleared->Clear();
  moved->Set(base::TimePoint::max());
  destroyed.reset();
  EXPECT_FALSE(loop_.RunUntil(loop_.Now() + milliseconds(20), [] { return false; }));
  EXPECT_EQ(passed, 0);
}

TEST_F(QtEventLoopTest, LetsADeadlineBeDestroyedByItsOwnComing) {
  std::unique_ptr<base::Deadline> deadline;
  std::string seen;
  const auto text = std::make_shared<std::string>("still here");
  deadline = loop_.CreateDeadline([&deadline, &seen, text] {
    deadline.reset();
    seen = *text;
  });
  deadline->Set(loop_.Now());
  EXPECT_TRUE(RunUntil([&] { return !seen.empty(); }));
  EXPECT_EQ(seen, "still here");
}

TEST_F(QtEventLoopTest, ADeadlineComesAsMuchLaterAsTheProgramWasHeldUp) {
  for (const milliseconds held_up : {milliseconds(24), milliseconds(250)}) {
    base::TimePoint passed_at{};
    const auto deadline = loop_.CreateDeadline([&] { passed_at = loop_.Now(); });
    const base::TimePoint due = loop_.Now() + milliseconds(40);
    deadline->Set(due);
    EXPECT_FALSE(loop_.RunUntil(due - milliseconds(15), [] { return false; }));
    HoldUp(held_up);
    ASSERT_TRUE(RunUntil([&] { return passed_at != base::TimePoint{}; }));
    // What is left of a look, 10 ms at the most, is no hold-up.
    EXPECT_GE(passed_at - due, held_up - milliseconds(11));
  }
}

// An adapter reads in one round of the loop and delivers in the next, or in one after that.
TEST_F(QtEventLoopTest, WhatTheDriversHeldIsDeliveredBeforeADeadlineThatIsOver) {
  std::string order;
  int hops = 0;
  const auto delivery = loop_.CreateTimer([&] { order += "delivered "; });
  std::unique_ptr<base::Timer> hop;
  hop =
      loop_.CreateTimer([&] { ++hops < 4 ? hop->Start(microseconds(0)) : delivery->Start(microseconds(0)); });
  const auto deadline = loop_.CreateDeadline([&] { order += "deadline"; });
  deadline->Set(loop_.Now() - milliseconds(100));
  hop->Start(microseconds(0));
  ASSERT_TRUE(RunUntil([&] { return order.ends_with("deadline"); }));
  EXPECT_EQ(order, "delivered deadline");
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
