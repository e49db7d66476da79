// SPDX-License-Identifier: MIT
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "base/Job.h"
#include "base/Signal.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::base {
namespace {

using testing::ElementsAre;

class TaskTest : public testing::Test {
 public:
  Task<int> Number(int number) { co_return number; }
  Task<int> LaterNumber(int number) {
    co_await signal_.Next();
    co_return number;
  }
  Task<int> Failing() {
    co_await signal_.Next();
    throw Failure(2000, "no answer");
  }
  Task<void> Log(std::string text, Task<int> number) {
    log_.push_back(text);
    try {
      const int result = co_await number;
      log_.push_back(text + " " + std::to_string(result));
    } catch (const Failure& failure) {
      log_.push_back(text + " failed: " + failure.Description());
    }
  }
  void RaiseLater() {
    loop_->At(std::chrono::milliseconds(1), [this] {
      signal_.Raise();
      log_.emplace_back("raised");
    });
    loop_->Advance(std::chrono::milliseconds(2));
  }

  std::shared_ptr<tests::ManualEventLoop> loop_ = std::make_shared<tests::ManualEventLoop>();
  Signal signal_{loop_};
  std::vector<std::string> log_;
};

TEST_F(TaskTest, ATaskThatNeedNotWaitEndsAtOnce) {
  Job job;
  EXPECT_TRUE(job.Start(Log("a", Number(7))));
  EXPECT_FALSE(job.IsUnderWay());
  EXPECT_THAT(log_, ElementsAre("a", "a 7"));
}

TEST_F(TaskTest, ATaskThatWaitsGoesOnBehindTheEventThatEndsItsWait) {
  Job job;
  int ends = 0;
  EXPECT_FALSE(job.Start(Log("a", LaterNumber(7)), [&] { ++ends; }));
  EXPECT_TRUE(job.IsUnderWay());
  EXPECT_THAT(log_, ElementsAre("a"));
  RaiseLater();
  EXPECT_THAT(log_, ElementsAre("a", "raised", "a 7"));
  EXPECT_EQ(ends, 1);
  EXPECT_FALSE(job.IsUnderWay());
}

TEST_F(TaskTest, WhatATaskThrowsIsThrownWhereItIsAwaited) {
  Job job;
  job.Start(Log("a", Failing()));
  RaiseLater();
  EXPECT_EQ(log_.back(), "a failed: no answer");
}

TEST_F(TaskTest, WhatNobodyCatchesIsThrownOutOfTheEvent) {
  Job job;
  const auto fail = [](Task<int> task) -> Task<void> { co_await task; };
  job.Start(fail(Failing()));
  EXPECT_THROW(RaiseLater(), Failure);
  EXPECT_FALSE(job.IsUnderWay());
}

TEST_F(TaskTest, ThoseWhoWaitGoOnInTheirOrder) {
  Job first;
  Job second;
  first.Start(Log("a", LaterNumber(1)));
  second.Start(Log("b", LaterNumber(2)));
  RaiseLater();
  EXPECT_THAT(log_, ElementsAre("a", "b", "raised", "a 1", "b 2"));
}

TEST_F(TaskTest, AJobThatIsDroppedInItsWaitIsNeverHeardOfAgain) {
  const auto held = std::make_shared<int>(7);
  const auto hold = [](Task<int> task, std::shared_ptr<int>) -> Task<void> { co_await task; };
  {
    Job job;
    job.Start(hold(LaterNumber(7), held));
    EXPECT_EQ(held.use_count(), 2);
  }
  EXPECT_EQ(held.use_count(), 1);
  RaiseLater();
  EXPECT_THAT(log_, ElementsAre("raised"));
}

TEST_F(TaskTest, AJobMayBeDroppedByOneThatGoesOnBeforeIt) {
  Job second;
  Job first;
  const auto drop = [](Task<int> task, Job& job) -> Task<void> {
    co_await task;
    job.CallOff();
  };
  first.Start(drop(LaterNumber(1), second));
  second.Start(Log("b", LaterNumber(2)));
  RaiseLater();
  EXPECT_THAT(log_, ElementsAre("b", "raised"));
}

// What an operation that blocks runs inside itself.
TEST_F(TaskTest, AJobThatIsCalledOffInsideAStepEndsWithTheStep) {
  Job job;
  bool went_on = false;
  const auto work = [](Job& self, bool& further) -> Task<void> {
    co_await Blocking([&self] {
      self.CallOff();
      EXPECT_TRUE(self.IsUnderWay()) << "its step is on the stack";
    });
    further = true;
  };
  EXPECT_TRUE(job.Start(work(job, went_on)));
  EXPECT_FALSE(went_on);
  EXPECT_FALSE(job.IsUnderWay());
}

TEST_F(TaskTest, AJobMayBeDestroyedInsideItsOwnStep) {
  auto job = std::make_unique<Job>();
  const auto held = std::make_shared<int>(7);
  const auto work = [](std::unique_ptr<Job>& self, std::shared_ptr<int> value) -> Task<void> {
    co_await Blocking([&self] { self.reset(); });
    *value = 8;
  };
  job->Start(work(job, held));
  EXPECT_EQ(job, nullptr);
  EXPECT_EQ(*held, 7);
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(TaskTest, WhatABlockingOperationThrowsIsThrownWhereItIsAwaited) {
  Job job;
  std::string text;
  const auto work = [](std::string& thrown) -> Task<void> {
    try {
      co_await Blocking([] { throw Failure(1002, "refused"); });
    } catch (const Failure& failure) {
      thrown = failure.Description();
    }
  };
  EXPECT_TRUE(job.Start(work(text)));
  EXPECT_EQ(text, "refused");
}

TEST_F(TaskTest, ManyStepsThatNeedNotWaitDoNotDeepenTheStack) {
  Job job;
  int sum = 0;
  const auto work = [](TaskTest& test, int& total) -> Task<void> {
    for (int i = 0; i < 200'000; ++i) total += co_await test.Number(1);
  };
  EXPECT_TRUE(job.Start(work(*this, sum)));
  EXPECT_EQ(sum, 200'000);
}

TEST_F(TaskTest, WhatIsRunOnItsOwnGoesOnUntilItEnds) {
  Job::Run(Log("a", LaterNumber(7)));
  RaiseLater();
  EXPECT_EQ(log_.back(), "a 7");
}

TEST_F(TaskTest, TheEndOfAnEventIsBehindWhatTheEventDoes) {
  Job job;
  const auto work = [](EventLoop& loop, std::vector<std::string>& log) -> Task<void> {
    co_await EndOfEvent(loop);
    log.emplace_back("after");
  };
  loop_->At(std::chrono::milliseconds(1), [&] {
    job.Start(work(*loop_, log_));
    log_.emplace_back("event");
  });
  loop_->Advance(std::chrono::milliseconds(1));
  EXPECT_THAT(log_, ElementsAre("event", "after"));
}

}  // namespace
}  // namespace korval::base
