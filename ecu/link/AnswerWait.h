// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

#include "base/Time.h"

namespace korval::ecu {

/// How long an ECU may take.
struct AnswerTimes {
  base::Duration answer{};   ///< P2: until the answer
  base::Duration pending{};  ///< P2*: until the answer, after each "response pending"
  base::Duration overall{};  ///< until the answer, however often the ECU asks for time
};

/// Until when the answer to a request is waited for.
class AnswerWait {
 public:
  AnswerWait() = default;
  /// The request is out at `sent`.
  AnswerWait(const AnswerTimes& times, base::TimePoint sent) : times_(times) {
    CountFrom(sent);
    AskedAgain(sent);
  }

  /// The request is out only then; how long all of it may take counts from there.
  void CountFrom(base::TimePoint sent) { last_ = sent + times_.overall; }
  void AskedAgain(base::TimePoint now) { deadline_ = std::min(now + times_.answer, last_); }
  /// "Response pending".
  void AskedForTime(base::TimePoint now) { deadline_ = std::min(now + times_.pending, last_); }

  base::TimePoint Deadline() const { return deadline_; }
  /// However often the ECU asks for time.
  base::TimePoint Last() const { return last_; }

 private:
  AnswerTimes times_;
  base::TimePoint last_{};
  base::TimePoint deadline_{};
};

}  // namespace korval::ecu
