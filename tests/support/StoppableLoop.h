// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>

#include "tests/support/ManualEventLoop.h"

namespace korval::tests {

/// The loop of one program among others that share a model clock. The program can be stopped: meanwhile
/// nothing of it runs, and what drivers have for it waits.
class StoppableLoop : public base::EventLoop {
 public:
  explicit StoppableLoop(std::shared_ptr<ManualEventLoop> clock) : clock_(std::move(clock)) {}

  base::TimePoint Now() const override { return clock_->Now(); }
  std::unique_ptr<base::Timer> CreateTimer(std::function<void()> fire) override {
    return std::make_unique<StoppableTimer>(*this, std::move(fire));
  }
  std::unique_ptr<base::Deadline> CreateDeadline(std::function<void()> passed) override {
    return std::make_unique<StoppableDeadline>(*this, std::move(passed));
  }
  void Defer(std::function<void()> step) override { clock_->Defer(std::move(step)); }

  void Stop(base::Duration span) {
    going_on_ = Now() + span;
    stopped_for_ += span;
  }
  /// What a driver has for the program.
  void Deliver(std::function<void()> event) {
    if (Left().count() == 0) return event();
    clock_->At(Left(), std::move(event));
  }

 private:
  class StoppableTimer : public base::Timer {
   public:
    StoppableTimer(StoppableLoop& loop, std::function<void()> fire)
        : loop_(loop), fire_(std::move(fire)), timer_(loop.clock_->CreateTimer([this] { Fire(); })) {}
    void Start(std::chrono::microseconds delay) override { timer_->Start(delay); }
    void Stop() override { timer_->Stop(); }

   private:
    void Fire() {
      const base::Duration left = loop_.Left();
      if (left.count() > 0) return timer_->Start(std::chrono::ceil<std::chrono::microseconds>(left));
      const std::function<void()> fire = fire_;  // it may destroy the timer
      fire();
    }

    StoppableLoop& loop_;
    std::function<void()> fire_;
    std::unique_ptr<base::Timer> timer_;
  };

  class StoppableDeadline : public base::Deadline {
   public:
    StoppableDeadline(StoppableLoop& loop, std::function<void()> passed)
        : loop_(loop), passed_(std::move(passed)), deadline_(loop.clock_->CreateDeadline([this] {
            set_ = false;
            Pass();
          })) {}
    void Set(base::TimePoint due) override {
      if (set_ && due == due_) return;
      due_ = due;
      stopped_before_ = loop_.stopped_for_;
      Wait(due);
    }
    void Clear() override {
      set_ = false;
      deadline_->Clear();
    }

   private:
    void Wait(base::TimePoint due) {
      set_ = true;
      deadline_->Set(due);
    }
    void Pass() {
      const base::TimePoint due = due_ + (loop_.stopped_for_ - stopped_before_);
      if (loop_.Now() < due) return Wait(due);
      const std::function<void()> passed = passed_;  // it may destroy the deadline
      passed();
    }

    StoppableLoop& loop_;
    std::function<void()> passed_;
    base::TimePoint due_{};
    base::Duration stopped_before_{};
    bool set_ = false;
    std::unique_ptr<base::Deadline> deadline_;
  };

  base::Duration Left() const { return std::max(going_on_ - Now(), base::Duration::zero()); }

  std::shared_ptr<ManualEventLoop> clock_;
  base::TimePoint going_on_{};
  base::Duration stopped_for_{};
};

}  // namespace korval::tests
