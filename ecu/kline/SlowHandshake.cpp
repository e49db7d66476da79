// SPDX-License-Identifier: MIT
#include "ecu/kline/SlowHandshake.h"

#include <array>

#include "base/ByteBuffer.h"

namespace korval::ecu {
namespace {

constexpr std::uint8_t kSyncByte = 0x55;

std::uint8_t Inverted(std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); }

}  // namespace

SlowHandshake::SlowHandshake(const Timing& timing, std::uint8_t address, base::Duration byte_time,
                             base::TimePoint now)
    : timing_(timing),
      address_(address),
      byte_time_(byte_time),
      deadline_(now + timing.Value(&Timing::w1) + byte_time) {}

void SlowHandshake::Go(Step step, base::TimePoint deadline) {
  step_ = step;
  deadline_ = deadline;
}

// A byte that is not the one waited for is passed over: the edges of the address look like bytes, too.
void SlowHandshake::ByteArrived(std::uint8_t byte, base::TimePoint now) {
  if (state_ != State::kRunning) return;
  switch (step_) {
    case Step::kSync:
      if (byte == kSyncByte) Go(Step::kFirstKey, now + timing_.Value(&Timing::w2) + byte_time_);
      break;
    case Step::kFirstKey:
      first_key_ = byte;
      Go(Step::kSecondKey, now + timing_.Value(&Timing::w3) + byte_time_);
      break;
    case Step::kSecondKey:
      second_key_ = byte;
      Go(Step::kPause, now + timing_.Value(&Timing::w4));
      break;
    case Step::kPause:
      break;
    case Step::kAddress:
      if (byte == Inverted(address_)) state_ = State::kDone;
      break;
  }
}

std::optional<base::TimePoint> SlowHandshake::Due() const {
  return state_ == State::kRunning && step_ == Step::kPause ? std::optional(deadline_) : std::nullopt;
}

std::optional<base::TimePoint> SlowHandshake::Deadline() const {
  return state_ == State::kRunning && step_ != Step::kPause ? std::optional(deadline_) : std::nullopt;
}

void SlowHandshake::TimeElapsed(base::TimePoint now) {
  const auto deadline = Deadline();
  if (deadline && now >= *deadline) state_ = State::kFailed;
}

std::optional<std::uint8_t> SlowHandshake::TakeByte(base::TimePoint now) {
  if (state_ != State::kRunning || step_ != Step::kPause || now < deadline_) return std::nullopt;
  Go(Step::kAddress, now + byte_time_ + timing_.Value(&Timing::w4_max) + byte_time_);
  return Inverted(second_key_);
}

std::string SlowHandshake::MissingStep() const {
  switch (step_) {
    case Step::kSync:
      return "sync byte 55 within W1";
    case Step::kFirstKey:
      return "key byte 1 within W2";
    case Step::kSecondKey:
      return "key byte 2 within W3";
    case Step::kPause:
    case Step::kAddress:
      break;
  }
  return "inverted address " + base::HexText(std::array{Inverted(address_)}) + " within W4";
}

}  // namespace korval::ecu
