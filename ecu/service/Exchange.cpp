// SPDX-License-Identifier: MIT
#include "ecu/service/Exchange.h"

#include <algorithm>

#include "ecu/link/AnswerBytes.h"

namespace korval::ecu {

Exchange::Exchange(base::ByteView request, const Dialect& dialect, const ExchangeTiming& timing,
                   base::TimePoint now)
    : dialect_(&dialect),
      expected_(request, dialect.RepeatedBytes(request[0])),
      timing_(timing),
      wait_({timing.answer, timing.pending, timing.overall}, now) {}

// What the request needs to go out is no time of the ECU's.
void Exchange::LinkBusy(base::TimePoint until) {
  busy_deadline_ = until + timing_.answer;
  if (!heard_) wait_.CountFrom(until);
}

void Exchange::MessageArrived(base::ByteView message, base::TimePoint now) {
  if (state_ != State::kWaiting || message.empty()) return;
  heard_ = true;
  if (expected_.IsPending(message)) return wait_.AskedForTime(now);
  if (expected_.IsNegative(message) && message[2] == kBusyRepeatRequest && PlanRepeat(now)) return;
  if (expected_.IsPositive(message)) {
    state_ = State::kPositive;
  } else if (expected_.IsNegative(message)) {
    state_ = State::kNegative;
  }
  answer_ = base::ByteBuffer(message);
}

bool Exchange::PlanRepeat(base::TimePoint now) {
  if (!repeat_end_) repeat_end_ = std::min(now + timing_.busy_cap, wait_.Last());
  const base::TimePoint due = now + timing_.busy_repeat;
  if (due >= *repeat_end_) return false;
  repeat_at_ = due;
  return true;
}

bool Exchange::AskAgain(base::TimePoint now) {
  if (state_ != State::kWaiting || repeated_ == timing_.repeats || now >= wait_.Last()) return false;
  ++repeated_;
  wait_.AskedAgain(now);
  return true;
}

void Exchange::TimeElapsed(base::TimePoint now) {
  if (state_ != State::kWaiting || now < Deadline()) return;
  if (repeat_at_) {
    repeat_at_.reset();
    repeat_due_ = true;
    wait_.AskedAgain(now);
    return;
  }
  if (!answer_.Empty()) {
    state_ = State::kForeign;
  } else if (AskAgain(now)) {
    repeat_due_ = true;
  } else {
    state_ = State::kSilent;
  }
}

}  // namespace korval::ecu
