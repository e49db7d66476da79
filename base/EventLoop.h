// SPDX-License-Identifier: MIT
// Time, timers and waiting, as the floors below the user interface see them. Everything runs on one
// thread: whoever waits keeps the events running, so any event can arrive inside a wait.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace korval::base {

/// Monotonic time since an arbitrary origin.
using TimePoint = std::chrono::nanoseconds;

/// A one-shot timer. Destroying it stops it.
class Timer {
 public:
  virtual ~Timer() = default;
  /// Fires once after `delay` (0 or more); a running timer starts anew.
  virtual void Start(std::chrono::microseconds delay) = 0;
  virtual void Stop() = 0;
};

/// The seam to the host's event loop.
class EventLoop {
 public:
  virtual ~EventLoop() = default;
  virtual TimePoint Now() const = 0;
  /// `fire` runs from the event loop, never from inside Start.
  virtual std::unique_ptr<Timer> CreateTimer(std::function<void()> fire) = 0;
  /// Runs events until `done` holds or `deadline` has come, and says whether `done` holds. `done` is
  /// asked before the first event and after each. Waits may nest; an outer one ends after an inner one.
  virtual bool RunUntil(TimePoint deadline, const std::function<bool()>& done) = 0;
};

}  // namespace korval::base
