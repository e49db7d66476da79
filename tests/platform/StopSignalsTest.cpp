// SPDX-License-Identifier: MIT
#include <csignal>

#include <gtest/gtest.h>
#include <unistd.h>

#include "QtTest.h"
#include "platform/process/StopSignals.h"

namespace korval::platform {
namespace {

using testing::KilledBySignal;

class StopSignalsTest : public QtTest {
 protected:
  /// What a process does whose event loop hangs.
  [[noreturn]] static void Hang() {
    while (true) ::pause();
  }
  /// Lets so much time pass between two signals that nobody takes them for one.
  static void LetTimePass() { ::usleep(200'000); }
};

TEST_F(StopSignalsTest, EachOfThemIsAnEvent) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    int stops = 0;
    const StopSignals stop([&] { ++stops; });
    ::raise(signal);
    EXPECT_EQ(stops, 0) << "never inside the signal";
    EXPECT_TRUE(RunUntil([&] { return stops > 0; }));
    EXPECT_EQ(stops, 1);
  }
}

TEST_F(StopSignalsTest, AHangUpThatIsIgnoredStaysIgnored) {
  std::signal(SIGHUP, SIG_IGN);
  int stops = 0;
  {
    const StopSignals stop([&] { ++stops; });
    ::raise(SIGHUP);
    RunQueuedEvents();
  }
  ::raise(SIGHUP);
  std::signal(SIGHUP, SIG_DFL);
  EXPECT_EQ(stops, 0);
}

using StopSignalsDeathTest = StopSignalsTest;

TEST_F(StopSignalsDeathTest, ASecondOneEndsAProcessThatHangs) {
  for (const int second : {SIGINT, SIGTERM}) {
    EXPECT_EXIT(
        {
          const StopSignals stop([] {});
          ::raise(SIGTERM);
          LetTimePass();
          ::raise(second);
          Hang();
        },
        KilledBySignal(second), "");
  }
}

TEST_F(StopSignalsDeathTest, ASignalThatIsSentTwiceAtOnceLeavesTimeForAnEndInOrder) {
  EXPECT_EXIT(
      {
        bool stopped = false;
        const StopSignals stop([&] { stopped = true; });
        ::raise(SIGTERM);
        ::raise(SIGTERM);
        ::_exit(RunUntil([&] { return stopped; }) ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        const StopSignals stop([] {});
        ::raise(SIGTERM);
        ::raise(SIGTERM);
        Hang();
      },
      KilledBySignal(SIGALRM), "");
}

TEST_F(StopSignalsDeathTest, ATerminalThatHangsUpTwiceIsNoSecondRequest) {
  EXPECT_EXIT(
      {
        bool stopped = false;
        const StopSignals stop([&] { stopped = true; });
        ::raise(SIGHUP);
        LetTimePass();
        ::raise(SIGHUP);
        ::_exit(RunUntil([&] { return stopped; }) ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace korval::platform
