// SPDX-License-Identifier: MIT
#include "platform/QtEventLoop.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <QTimer>

#include "platform/process/EventBarrier.h"

namespace korval::platform {
namespace {

// A deadline looks at the clock so often, and takes what its look came late for a time in which the program
// was held up. Less than that is how punctual timers are.
constexpr std::chrono::milliseconds kLook{10};
constexpr std::chrono::milliseconds kPunctual{2};
// Rounds of the loop between the time of a deadline and its coming. A serial line delivers in two, a virtual
// CAN bus whose relay is in this very process in five: both ends of two connections and a queued event.
constexpr int kRoundsToDeliver = 8;

// Qt counts whole milliseconds in an int; rounding up never fires early.
std::chrono::milliseconds QtInterval(base::Duration span) {
  using std::chrono::milliseconds;
  return std::clamp(std::chrono::ceil<milliseconds>(span), milliseconds(0),
                    milliseconds(std::numeric_limits<int>::max()));
}

base::TimePoint SteadyNow() { return base::TimePoint(std::chrono::steady_clock::now().time_since_epoch()); }

// Gaps on a bus are as short as 100 us: a part of a millisecond is waited for by asking the clock in every
// round of the loop.
class QtTimer : public base::Timer {
 public:
  explicit QtTimer(std::function<void()> fire) : fire_(std::move(fire)) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, [this] { Fire(); });
  }

  void Start(std::chrono::microseconds delay) override {
    const bool short_delay = delay < std::chrono::milliseconds(1);
    not_before_ = short_delay ? SteadyNow() + delay : base::TimePoint::min();
    timer_.start(short_delay ? std::chrono::milliseconds(0) : QtInterval(delay));
  }
  void Stop() override { timer_.stop(); }

 private:
  void Fire() {
    if (SteadyNow() < not_before_) return timer_.start(0);
    const std::function<void()> held = fire_;  // firing may destroy the timer
    EventBarrier::Run("a timer", held);
  }

  std::function<void()> fire_;
  base::TimePoint not_before_{};
  QTimer timer_;
};

class QtDeadline : public base::Deadline {
 public:
  explicit QtDeadline(std::function<void()> passed) : passed_(std::move(passed)) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, [this] { Look(); });
  }

  void Set(base::TimePoint due) override {
    if (timer_.isActive() && due == due_) return;
    due_ = due;
    held_up_ = base::Duration::zero();
    Wait(SteadyNow());
  }
  void Clear() override { timer_.stop(); }

 private:
  // Without overflow at the end of time.
  base::Duration Left(base::TimePoint now) const { return due_ - now + held_up_; }

  void Wait(base::TimePoint now) {
    rounds_ = 0;
    StartLook(now, QtInterval(std::min<base::Duration>(Left(now), kLook)));
  }

  void StartLook(base::TimePoint now, std::chrono::milliseconds span) {
    next_look_ = now + span;
    timer_.start(span);
  }

  void Look() {
    const base::TimePoint now = SteadyNow();
    const base::Duration late = now - next_look_;
    if (late > kPunctual) held_up_ += late;
    if (Left(now) > base::Duration::zero()) return Wait(now);
    if (rounds_++ < kRoundsToDeliver) return StartLook(now, std::chrono::milliseconds(0));
    const std::function<void()> held = passed_;  // it may destroy the deadline
    EventBarrier::Run("a deadline", held);
  }

  std::function<void()> passed_;
  base::TimePoint due_{};
  base::Duration held_up_{};
  base::TimePoint next_look_{};
  int rounds_ = 0;
  QTimer timer_;
};

}  // namespace

base::TimePoint QtEventLoop::Now() const { return SteadyNow(); }

std::unique_ptr<base::Timer> QtEventLoop::CreateTimer(std::function<void()> fire) {
  return std::make_unique<QtTimer>(std::move(fire));
}

std::unique_ptr<base::Deadline> QtEventLoop::CreateDeadline(std::function<void()> passed) {
  return std::make_unique<QtDeadline>(std::move(passed));
}

// Posted, so that a host's own loop inside the event delivers it too.
void QtEventLoop::Defer(std::function<void()> step) {
  QMetaObject::invokeMethod(
      &deferred_, [step = std::move(step)] { EventBarrier::Run("a step behind an event", step); },
      Qt::QueuedConnection);
}

}  // namespace korval::platform
