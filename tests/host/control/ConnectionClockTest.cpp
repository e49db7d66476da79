// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "host/control/ConnectionClock.h"
#include "tests/support/FakeStatusView.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::host {
namespace {

using std::chrono::seconds;

class ConnectionClockTest : public ::testing::Test {
 protected:
  ConnectionClockTest() { clock.Bind(owner); }

  std::string Shown() { return view.panels["ConnectTime"]; }

  tests::ManualEventLoop loop;
  tests::FakeStatusView view;
  std::shared_ptr<int> owner = std::make_shared<int>(0);
  ConnectionClock clock{loop, view};
};

TEST_F(ConnectionClockTest, ShowsZeroAtOnceAndABlankBehindTheTime) {
  clock.Start();
  EXPECT_EQ(Shown(), "00:00:00 ");
}

TEST_F(ConnectionClockTest, CountsHoursMinutesAndSecondsInTwoDigits) {
  clock.Start();
  loop.Advance(seconds(3661));
  EXPECT_EQ(Shown(), "01:01:01 ");
}

TEST_F(ConnectionClockTest, StartsTheHoursAnewAfterADay) {
  clock.Start();
  loop.Advance(seconds(86400 + 59));
  EXPECT_EQ(Shown(), "00:00:59 ");
}

TEST_F(ConnectionClockTest, EmptiesThePanelAndTicksNoMoreWhenStopped) {
  clock.Start();
  loop.Advance(seconds(5));
  clock.Stop();
  EXPECT_EQ(Shown(), "");
  loop.Advance(seconds(5));
  EXPECT_EQ(Shown(), "");
}

TEST_F(ConnectionClockTest, CountsFromTheLastStart) {
  clock.Start();
  loop.Advance(seconds(5));
  clock.Start();
  loop.Advance(seconds(2));
  EXPECT_EQ(Shown(), "00:00:02 ");
}

TEST_F(ConnectionClockTest, DoesNotTickForAnOwnerThatIsGone) {
  clock.Start();
  owner.reset();
  loop.Advance(seconds(5));
  EXPECT_EQ(Shown(), "00:00:00 ");
}

}  // namespace
}  // namespace korval::host
