// SPDX-License-Identifier: MIT
// One request and its answer as ISO 14230-3 has them, at message level. A pure state machine: messages and
// the time go in, the outcome and a deadline come out.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"

namespace korval::ecu {

inline constexpr std::uint8_t kNegativeResponse = 0x7F;
/// A positive answer's service is the request's plus this.
inline constexpr std::uint8_t kPositiveOffset = 0x40;

/// How long an exchange may take.
struct ExchangeTiming {
  base::TimePoint answer{};   ///< P2: until the answer
  base::TimePoint pending{};  ///< P2*: until the answer, after each "response pending"
  base::TimePoint overall{};  ///< cap on all of it, however often the ECU asks for time
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

  /// The exchange of `request`, which is not empty and is sent at `now`.
  Exchange(base::ByteView request, const ExchangeTiming& timing, base::TimePoint now);

  /// A message of the ECU. A foreign one (of another service or another data identifier) is discarded and
  /// does not extend the wait; 7F ss 78 does.
  void MessageArrived(base::ByteView message, base::TimePoint now);
  void TimeElapsed(base::TimePoint now);

  State CurrentState() const { return state_; }
  /// When TimeElapsed is due.
  base::TimePoint Deadline() const { return deadline_; }
  /// The positive or negative answer; the last foreign one when there was no other.
  const base::ByteBuffer& Answer() const { return answer_; }
  base::ByteBuffer& Answer() { return answer_; }
  /// Service of the request.
  std::uint8_t Service() const { return head_[0]; }

 private:
  bool IsPositive(base::ByteView message) const;
  bool IsNegative(base::ByteView message) const;

  // The request's service, and the identifier that its positive answer repeats.
  std::array<std::uint8_t, 3> head_{};
  std::size_t repeated_ = 0;  // bytes of the identifier
  base::TimePoint pending_;
  base::TimePoint last_deadline_;
  base::TimePoint deadline_;
  State state_ = State::kWaiting;
  base::ByteBuffer answer_;
};

}  // namespace korval::ecu
