// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>

#include <QCoreApplication>
#include <gtest/gtest.h>

#include "tests/support/WaitingQtLoop.h"

namespace korval::platform {

/// A test with Qt's event loop. Waits end with what they wait for; the deadline only ends a broken test.
class QtTest : public testing::Test {
 public:
  ~QtTest() override {
    // Deletes what was to be deleted later, for there is no later.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

 protected:
  bool RunUntil(const std::function<bool()>& done) { return loop_.RunUntil(loop_.Now() + kDeadline, done); }
  /// Runs until an event that is queued now has been delivered, and with it all that were queued before.
  void RunQueuedEvents() {
    bool fired = false;
    const auto timer = loop_.CreateTimer([&] { fired = true; });
    timer->Start(std::chrono::microseconds(0));
    ASSERT_TRUE(RunUntil([&] { return fired; }));
  }

  static constexpr std::chrono::seconds kDeadline{60};
  int argument_count_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  QCoreApplication application_{argument_count_, arguments_};
  tests::WaitingQtLoop loop_;
};

}  // namespace korval::platform
