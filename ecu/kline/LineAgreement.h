// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/kline/KLineFrame.h"
#include "ecu/kline/KLineTiming.h"
#include "ecu/kline/KeyBytes.h"

namespace korval::ecu {

/// What a tester and an ECU have agreed on: the header of requests, the times and the speed. It begins with
/// what the ECU file says; key bytes and some services change it.
class LineAgreement {
 public:
  explicit LineAgreement(const FunctionDescription& function);

  /// As before an initialisation.
  void Reset() { Announced(KeyBytes::Any()); }
  /// The ECU was initialised and has these key bytes.
  void Announced(const KeyBytes& key_bytes);
  /// The ECU has answered that request, which is not empty, in the positive: accessTimingParameters (83)
  /// changes the times, a diagnostic session (10, 20) the speed.
  void Granted(base::ByteView request);

  /// The header of a request of that length; none when the ECU takes no message that long.
  std::optional<HeaderForm> FormFor(std::size_t message_length) const;
  const KLineTiming& Times() const { return timing_; }
  std::int32_t Baud() const { return baud_; }
  /// How long a byte is on the line.
  base::Duration ByteTime() const;

 private:
  FunctionDescription function_;
  KeyBytes key_bytes_ = KeyBytes::Any();
  KLineTiming timing_;
  std::int32_t baud_;
};

}  // namespace korval::ecu
