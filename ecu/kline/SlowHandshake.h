// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/EventLoop.h"
#include "ecu/description/Timing.h"

namespace korval::ecu {

/// What follows the 5-baud address (ISO 14230-2): the ECU sends 55, key byte 1 and key byte 2; the tester
/// returns key byte 2 inverted; the ECU ends it with the address inverted. A pure state machine that sees the
/// ECU's bytes alone.
class SlowHandshake {
 public:
  enum class State { kRunning, kDone, kFailed };

  /// The address ends at `now`; a byte is on the line for `byte_time`.
  SlowHandshake(const Timing& timing, std::uint8_t address, base::Duration byte_time, base::TimePoint now);

  void ByteArrived(std::uint8_t byte, base::TimePoint now);
  void TimeElapsed(base::TimePoint now);
  /// The byte to be written now.
  std::optional<std::uint8_t> TakeByte(base::TimePoint now);

  State CurrentState() const { return state_; }
  /// The ECU has sent its sync byte.
  bool HasBegun() const { return step_ != Step::kSync; }
  /// When TakeByte is due; none while the ECU is waited for.
  std::optional<base::TimePoint> Due() const;
  /// When TimeElapsed is due; none while nothing is waited for.
  std::optional<base::TimePoint> Deadline() const;
  std::uint8_t FirstKeyByte() const { return first_key_; }
  std::uint8_t SecondKeyByte() const { return second_key_; }
  /// What was waited for when it failed, as in "sync byte 55 within W1".
  std::string MissingStep() const;

 private:
  enum class Step { kSync, kFirstKey, kSecondKey, kPause, kAddress };

  void Go(Step step, base::TimePoint deadline);

  Timing timing_;
  std::uint8_t address_;
  base::Duration byte_time_;
  State state_ = State::kRunning;
  Step step_ = Step::kSync;
  base::TimePoint deadline_;
  std::uint8_t first_key_ = 0;
  std::uint8_t second_key_ = 0;
};

}  // namespace korval::ecu
