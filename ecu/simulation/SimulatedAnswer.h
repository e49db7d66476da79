// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/simulation/SimulatedValues.h"

namespace korval::ecu {

/// The positive answer to one request of the ECU file: service + 40 hex, the byte or bytes of the request
/// that name the data, then the Received items. What does not move is coded once, so that an answer costs no
/// more than its moving signals.
class SimulatedAnswer {
 public:
  /// Keeps a reference to `request`.
  explicit SimulatedAnswer(const RequestDescription& request) : request_(request) {}

  /// Valid until the next call.
  base::ByteView At(base::Duration time, const SimulatedValues& values);

 private:
  struct MovingItem {
    const ItemDescription* item;
    const SignalDescription* signal;
  };

  void Prepare(const SimulatedValues& values);

  const RequestDescription& request_;
  std::optional<std::uint64_t> prepared_for_;  // count of held requests
  base::ByteBuffer bytes_;
  std::vector<MovingItem> moving_;
};

}  // namespace korval::ecu
