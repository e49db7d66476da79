// SPDX-License-Identifier: MIT
// One request and its answer at message level. A pure state machine: messages and the time go in, the outcome
// and a deadline come out.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/link/AnswerWait.h"
#include "ecu/service/Dialect.h"
#include "ecu/service/ExpectedAnswer.h"

namespace korval::ecu {

/// How long an exchange may take, and how often its request goes out.
struct ExchangeTiming {
  base::Duration answer{};   ///< P2: until the answer
  base::Duration pending{};  ///< P2*: until the answer, after each "response pending"
  /// Cap on all of it, however often the ECU asks for time; a message that is still on its way then may end.
  base::Duration overall{};
  /// After "busy, repeat request" (21): how long until the request is repeated, and how long after the first
  /// one it still is.
  base::Duration busy_repeat{};
  base::Duration busy_cap{};
  /// How often the request is sent again because its answer is damaged or missing.
  int repeats = 0;
};

class Exchange {
 public:
  enum class State {
    kWaiting,
    kPositive,
    kNegative,
    kSilent,  ///< no answer in time
    kForeign  ///< no answer in time, but one to something else
  };

  /// The exchange of `request`, which is not empty and is sent at `now`. The dialect outlives it.
  Exchange(base::ByteView request, const Dialect& dialect, const ExchangeTiming& timing, base::TimePoint now);

  /// A message of the ECU. A foreign one (of another service or another data identifier) is discarded and
  /// does not extend the wait; 7F ss 78 does.
  void MessageArrived(base::ByteView message, base::TimePoint now);
  void TimeElapsed(base::TimePoint now);
  /// The request is out; that ends an exchange to which no answer comes.
  void Sent() {
    if (state_ == State::kWaiting && !answered_) state_ = State::kPositive;
  }
  /// No answer comes to the request: it is done when it is out.
  void AwaitNoAnswer() { answered_ = false; }
  /// The link says that the answer is damaged or missing. Whether the request has to be sent once more now.
  bool AskAgain(base::TimePoint now);
  /// Whether the request has to be sent once more now; holds once.
  bool TakeRepeat() { return std::exchange(repeat_due_, false); }
  /// The link carries a part of the request or of the answer until then at the latest: P2 does not end
  /// before P2 later.
  void LinkBusy(base::TimePoint until);
  /// A part of the answer is coming in until then at the latest, and the wait does not end before; none: no
  /// longer.
  void Receiving(std::optional<base::TimePoint> until) {
    receiving_until_ = until.value_or(base::TimePoint::min());
  }
  /// The ECU was busy: nothing is awaited before the request is sent once more.
  bool IsPausing() const { return repeat_at_.has_value(); }

  State CurrentState() const { return state_; }
  /// When TimeElapsed is due.
  base::TimePoint Deadline() const {
    return repeat_at_.value_or(std::max({wait_.Deadline(), busy_deadline_, receiving_until_}));
  }
  /// The positive or negative answer; the last foreign one when there was no other.
  const base::ByteBuffer& Answer() const { return answer_; }
  base::ByteBuffer& Answer() { return answer_; }
  /// Service of the request.
  std::uint8_t Service() const { return expected_.Service(); }
  const Dialect& SpokenIn() const { return *dialect_; }

 private:
  bool PlanRepeat(base::TimePoint now);

  const Dialect* dialect_;
  ExpectedAnswer expected_;
  ExchangeTiming timing_;
  bool answered_ = true;
  AnswerWait wait_;
  bool heard_ = false;
  base::TimePoint busy_deadline_{};
  base::TimePoint receiving_until_ = base::TimePoint::min();
  std::optional<base::TimePoint> repeat_end_;  // none while the ECU was not busy
  std::optional<base::TimePoint> repeat_at_;
  bool repeat_due_ = false;
  int repeated_ = 0;
  State state_ = State::kWaiting;
  base::ByteBuffer answer_;
};

}  // namespace korval::ecu
