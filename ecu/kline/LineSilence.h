// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

#include "base/Time.h"

namespace korval::ecu {

/// When the line was last busy, and whether it has been silent for long enough to speak. That it is silent
/// shows when its time has elapsed, and never at once: the adapter may still hold what was said before.
class LineSilence {
 public:
  void BusyUntil(base::TimePoint time) { since_ = std::max(since_, time); }
  base::TimePoint Since() const { return since_; }

  /// Waits for a silence of `span`, for `patience` more than that takes at the least.
  void Await(base::Duration span, base::Duration patience, base::TimePoint now) {
    span_ = span;
    end_ = std::max(now, since_ + span) + patience;
  }
  base::Duration Span() const { return span_; }
  bool IsOver(base::TimePoint now) const { return now >= since_ + span_; }
  /// The patience has come to its end.
  bool IsGivenUp(base::TimePoint now) const { return now >= end_; }
  /// When one or the other is to be asked.
  base::TimePoint Deadline() const { return std::min(since_ + span_, end_); }

 private:
  base::TimePoint since_{};
  base::Duration span_{};
  base::TimePoint end_{};
};

}  // namespace korval::ecu
