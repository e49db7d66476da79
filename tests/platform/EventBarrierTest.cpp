// SPDX-License-Identifier: MIT
#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "platform/process/EventBarrier.h"
#include "tests/support/WaitingQtLoop.h"

namespace korval::platform {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class EventBarrierTest : public testing::Test {
 public:
  ~EventBarrierTest() override { EventBarrier::SetReport({}); }

 protected:
  EventBarrierTest() {
    EventBarrier::SetReport([this](const std::string& sentence) { reports.push_back(sentence); });
  }
  /// Runs events until `done` holds; the deadline only ends a broken test.
  bool RunUntil(const std::function<bool()>& done) {
    return loop.RunUntil(loop.Now() + std::chrono::seconds(60), done);
  }

  int argument_count = 1;
  char name[5] = "test";
  char* arguments[2] = {name, nullptr};
  GuardedApplication<QCoreApplication> application{argument_count, arguments};
  tests::WaitingQtLoop loop;
  std::vector<std::string> reports;
};

TEST_F(EventBarrierTest, WhatATimerThrowsIsReportedAndTheNextEventsCome) {
  int fired = 0;
  std::unique_ptr<base::Timer> timer = loop.CreateTimer([&] {
    if (++fired < 3) timer->Start(std::chrono::microseconds(0));
    if (fired < 3) throw std::out_of_range("byte 9 of 8");
  });
  timer->Start(std::chrono::microseconds(0));
  EXPECT_TRUE(RunUntil([&] { return fired == 3; }));
  ASSERT_EQ(reports.size(), 2U);
  EXPECT_THAT(reports[0], HasSubstr("Internal error in an event of a timer: byte 9 of 8"));
}

TEST_F(EventBarrierTest, WhatAnyEventThrowsGoesNoFurtherThanTheApplication) {
  bool next = false;
  QTimer::singleShot(0, &application, [] { throw base::Failure(2012, "too long"); });
  QTimer::singleShot(0, &application, [] { throw 7; });
  QMetaObject::invokeMethod(
      &application, [] { throw std::bad_alloc(); }, Qt::QueuedConnection);
  QTimer::singleShot(1, &application, [&] { next = true; });
  EXPECT_TRUE(RunUntil([&] { return next; }));
  EXPECT_THAT(reports, testing::UnorderedElementsAre(HasSubstr("too long"), HasSubstr("no exception of the"),
                                                     HasSubstr("bad_alloc")));
}

TEST_F(EventBarrierTest, EventInsideAWaitThatThrowsDoesNotEndTheWait) {
  bool arrived = false;
  std::string command;
  const auto damage = loop.CreateTimer([] { throw std::runtime_error("damaged"); });
  const auto answer = loop.CreateTimer([&] { arrived = true; });
  const auto outer = loop.CreateTimer([&] {
    damage->Start(std::chrono::microseconds(0));
    answer->Start(std::chrono::milliseconds(1));
    command = RunUntil([&] { return arrived; }) ? "answered" : "given up";
  });
  outer->Start(std::chrono::microseconds(0));
  EXPECT_TRUE(RunUntil([&] { return !command.empty(); }));
  EXPECT_EQ(command, "answered");
  EXPECT_THAT(reports, ElementsAre(HasSubstr("damaged")));
}

TEST_F(EventBarrierTest, ReportThatThrowsIsTheEndOfItToo) {
  EventBarrier::SetReport([](const std::string&) { throw std::bad_alloc(); });
  bool next = false;
  QTimer::singleShot(0, &application, [] { throw std::runtime_error("damaged"); });
  QTimer::singleShot(1, &application, [&] { next = true; });
  EXPECT_TRUE(RunUntil([&] { return next; }));
  EXPECT_THAT(reports, IsEmpty());
}

}  // namespace
}  // namespace korval::platform
