// SPDX-License-Identifier: MIT
#include "ecu/kwp2000/Exchange.h"

#include <algorithm>

namespace korval::ecu {
namespace {

constexpr std::uint8_t kBusyRepeatRequest = 0x21;
constexpr std::uint8_t kResponsePending = 0x78;
constexpr std::size_t kNegativeLength = 3;

// How many bytes behind the service the positive answer repeats (ISO 14230-3 clauses 7 and 9).
std::size_t RepeatedBytes(std::uint8_t service) {
  switch (service) {
    case 0x21:  // local identifier
    case 0x30:
    case 0x3B:
      return 1;
    case 0x22:  // common identifier
    case 0x2E:
    case 0x2F:
      return 2;
    default:
      return 0;
  }
}

}  // namespace

Exchange::Exchange(base::ByteView request, const ExchangeTiming& timing, base::TimePoint now)
    : timing_(timing), last_deadline_(now + timing.overall) {
  std::copy_n(request.begin(), std::min(request.size(), head_.size()), head_.begin());
  repeated_ = std::min(RepeatedBytes(head_[0]), request.size() - 1);
  deadline_ = std::min(now + timing.answer, last_deadline_);
}

bool Exchange::IsPositive(base::ByteView message) const {
  if (message[0] != static_cast<std::uint8_t>(head_[0] + kPositiveOffset)) return false;
  const std::size_t compared = std::min(repeated_, message.size() - 1);
  return std::equal(message.begin() + 1, message.begin() + 1 + static_cast<std::ptrdiff_t>(compared),
                    head_.begin() + 1);
}

bool Exchange::IsNegative(base::ByteView message) const {
  return message.size() >= kNegativeLength && message[0] == kNegativeResponse && message[1] == head_[0];
}

void Exchange::MessageArrived(base::ByteView message, base::TimePoint now) {
  if (state_ != State::kWaiting || message.empty()) return;
  if (IsNegative(message) && message[2] == kResponsePending) {
    deadline_ = std::min(now + timing_.pending, last_deadline_);
    return;
  }
  if (IsNegative(message) && message[2] == kBusyRepeatRequest && PlanRepeat(now)) return;
  if (IsPositive(message)) {
    state_ = State::kPositive;
  } else if (IsNegative(message)) {
    state_ = State::kNegative;
  }
  answer_ = base::ByteBuffer(message);
}

bool Exchange::PlanRepeat(base::TimePoint now) {
  if (!repeat_end_) repeat_end_ = std::min(now + timing_.busy_cap, last_deadline_);
  const base::TimePoint due = now + timing_.busy_repeat;
  if (due >= *repeat_end_) return false;
  repeat_at_ = due;
  return true;
}

void Exchange::TimeElapsed(base::TimePoint now) {
  if (state_ != State::kWaiting || now < Deadline()) return;
  if (repeat_at_) {
    repeat_at_.reset();
    repeat_due_ = true;
    deadline_ = now + timing_.answer;
    return;
  }
  state_ = answer_.Empty() ? State::kSilent : State::kForeign;
}

}  // namespace korval::ecu
