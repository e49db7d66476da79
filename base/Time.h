// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

namespace korval::base {

/// A span of time.
using Duration = std::chrono::nanoseconds;

/// The clock of an event loop: monotonic, from an arbitrary origin. It has no now(), because only the event
/// loop knows its time.
struct EventClock {
  using duration = Duration;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = std::chrono::time_point<EventClock>;
};

/// A time as an event loop tells it.
using TimePoint = EventClock::time_point;

}  // namespace korval::base
