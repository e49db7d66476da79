// SPDX-License-Identifier: MIT
// Time and timers, as the floors below the user interface see them. Everything runs on one thread, and nobody
// holds it up: what waits is a task (Task.h), and any event can arrive meanwhile.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "base/Time.h"

namespace korval::base {

/// A one-shot timer. Destroying it stops it.
class Timer {
 public:
  virtual ~Timer() = default;
  /// Fires once after `delay` (0 or more); a running timer starts anew.
  virtual void Start(std::chrono::microseconds delay) = 0;
  virtual void Stop() = 0;
};

/// The end of a time in which something should have happened. It counts only time in which this program ran:
/// when the computer held it up, the deadline comes as much later. And before it comes, whatever the drivers
/// held by then (bytes of a serial line, frames of a bus) is delivered, so that what arrived in time is never
/// taken for missing. Destroying it clears it.
class Deadline {
 public:
  virtual ~Deadline() = default;
  /// Comes once, not before `due`, which may be in the past. Setting it to the time that it has already
  /// changes nothing, setting it to another one begins anew.
  virtual void Set(TimePoint due) = 0;
  virtual void Clear() = 0;
};

/// The seam to the host's event loop.
class EventLoop {
 public:
  virtual ~EventLoop() = default;
  virtual TimePoint Now() const = 0;
  /// For what is to be done at a time. `fire` runs from the event loop, never from inside Start.
  virtual std::unique_ptr<Timer> CreateTimer(std::function<void()> fire) = 0;
  /// For what is to be given up at a time. `passed` runs from the event loop, never from inside Set.
  virtual std::unique_ptr<Deadline> CreateDeadline(std::function<void()> passed) = 0;
  /// Runs `step` when the event that is being handled is over, before the next one; outside an event as an
  /// event of its own. For what must not stand on the stack of the one who sets it off.
  virtual void Defer(std::function<void()> step) = 0;
};

}  // namespace korval::base
