// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/ByteBuffer.h"
#include "base/Time.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/kline/EchoFilter.h"
#include "ecu/kline/LineAction.h"
#include "ecu/kline/SlowHandshake.h"
#include "ecu/kline/WakeUp.h"

namespace korval::ecu {

/// How an ECU is woken up (ISO 14230-2): by the pattern of a fast initialisation, or by its 5-baud address
/// and what follows that up to the key bytes. A pure state machine.
class EcuAwakening {
 public:
  enum class State {
    kRunning,
    kAwake,         ///< by the pattern: startCommunication is due
    kHasKeyBytes,   ///< by the address
    kLate,          ///< a level came later than ECUs bear, for the computer was too busy
    kNoEcho,        ///< the adapter did not return what was sent
    kNotAnswering,  ///< as MissingStep says
  };

  /// The references outlive it. The ECU has an initialisation; a byte is on the line for `byte_time`.
  EcuAwakening(const FunctionDescription& function, WakeUp::Means means, base::Duration byte_time,
               EchoFilter& echo, LineActions& actions);

  void BytesArrived(base::ByteView bytes, base::TimePoint now);
  void MoveOn(base::TimePoint now);
  void TimeElapsed(base::TimePoint now);

  State CurrentState() const { return state_; }
  /// When MoveOn is due, and when TimeElapsed is.
  std::optional<base::TimePoint> Due() const;
  std::optional<base::TimePoint> Deadline() const;
  /// Whether bytes count: while the line is held low they are none.
  bool IsListening() const { return handshake_.has_value(); }
  /// When the line was last busy by what was done here.
  base::TimePoint BusyUntil() const { return busy_until_; }

  /// The ECU has said something.
  bool HasBegun() const { return handshake_ && handshake_->HasBegun(); }
  std::string MissingStep() const { return handshake_->MissingStep(); }
  std::uint8_t FirstKeyByte() const { return handshake_->FirstKeyByte(); }
  std::uint8_t SecondKeyByte() const { return handshake_->SecondKeyByte(); }

 private:
  void Wake(base::TimePoint now);
  void SetLevel(bool low);
  void EndLevels(base::TimePoint now);
  void Listen(base::TimePoint from);
  void ShakeHands(base::TimePoint now);
  void Write(std::uint8_t byte, base::TimePoint now);

  const FunctionDescription& function_;
  const KLineDescription& kline_;
  WakeUp::Means means_;
  base::Duration byte_time_;
  EchoFilter& echo_;
  LineActions& actions_;
  WakeUp wake_up_;
  std::optional<SlowHandshake> handshake_;
  base::TimePoint busy_until_{};
  State state_ = State::kRunning;
};

}  // namespace korval::ecu
