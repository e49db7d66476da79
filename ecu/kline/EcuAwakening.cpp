// SPDX-License-Identifier: MIT
#include "ecu/kline/EcuAwakening.h"

#include <array>

namespace korval::ecu {
namespace {

using Init = KLineDescription::Init;

}  // namespace

EcuAwakening::EcuAwakening(const FunctionDescription& function, WakeUp::Means means, base::Duration byte_time,
                           EchoFilter& echo, LineActions& actions)
    : function_(function),
      kline_(function.KLine()),
      means_(means),
      byte_time_(byte_time),
      echo_(echo),
      actions_(actions),
      wake_up_(kline_.init == Init::kFast ? WakeUp::Fast(function.timing)
                                          : WakeUp::FiveBaud(function.timing, kline_.init_address)) {}

void EcuAwakening::BytesArrived(base::ByteView bytes, base::TimePoint now) {
  if (!handshake_) return;
  base::ByteBuffer rest;
  echo_.Filter(bytes, rest);
  for (const std::uint8_t byte : rest.View()) handshake_->ByteArrived(byte, now);
}

void EcuAwakening::MoveOn(base::TimePoint now) {
  if (!handshake_) Wake(now);
  if (handshake_) ShakeHands(now);
}

void EcuAwakening::TimeElapsed(base::TimePoint now) {
  if (handshake_) handshake_->TimeElapsed(now);
}

std::optional<base::TimePoint> EcuAwakening::Due() const {
  return handshake_ ? handshake_->Due() : wake_up_.Due();
}

std::optional<base::TimePoint> EcuAwakening::Deadline() const {
  return handshake_ ? handshake_->Deadline() : std::nullopt;
}

void EcuAwakening::Wake(base::TimePoint now) {
  const bool has_levels = means_ != WakeUp::Means::kNone;
  if (kline_.init == Init::kSlow && !has_levels) {
    Write(kline_.init_address, now);
    return Listen(busy_until_);
  }
  if (has_levels && wake_up_.IsLate(now)) {
    SetLevel(false);
    EndLevels(now);
    state_ = State::kLate;
    return;
  }
  while (const auto low = wake_up_.TakeLevel(now)) SetLevel(*low);
  if (has_levels) echo_.LineWasLow();
  if (!wake_up_.IsDone(now)) return;
  EndLevels(now);
  if (kline_.init == Init::kSlow) return Listen(now);
  state_ = State::kAwake;
}

void EcuAwakening::SetLevel(bool low) {
  actions_.push_back({low ? LineAction::Kind::kPullLow : LineAction::Kind::kLetRise, {}});
  if (!low || means_ != WakeUp::Means::kByte) return;
  actions_.push_back({LineAction::Kind::kSetSpeed, {}, wake_up_.SlowBaud()});
  actions_.push_back({LineAction::Kind::kWrite, {0x00}});
}

void EcuAwakening::EndLevels(base::TimePoint now) {
  if (means_ == WakeUp::Means::kByte) actions_.push_back({LineAction::Kind::kSetSpeed, {}, kline_.baud});
  busy_until_ = now;
}

void EcuAwakening::Listen(base::TimePoint from) {
  echo_.Expect({});
  handshake_.emplace(function_.timing, kline_.init_address, byte_time_, from);
}

void EcuAwakening::ShakeHands(base::TimePoint now) {
  if (const auto byte = handshake_->TakeByte(now)) {
    echo_.Expect(std::array{*byte});
    Write(*byte, now);
  }
  if (handshake_->CurrentState() == SlowHandshake::State::kFailed) {
    state_ = echo_.IsMissing() ? State::kNoEcho : State::kNotAnswering;
  } else if (handshake_->CurrentState() == SlowHandshake::State::kDone) {
    state_ = State::kHasKeyBytes;
  }
}

void EcuAwakening::Write(std::uint8_t byte, base::TimePoint now) {
  actions_.push_back({LineAction::Kind::kWrite, {byte}});
  busy_until_ = now + byte_time_;
}

}  // namespace korval::ecu
