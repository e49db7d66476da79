// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/ByteBuffer.h"
#include "base/Variant.h"
#include "ecu/description/EcuDescription.h"

namespace korval::ecu {

/// What the simulated ECU's items stand at: the value last written, else the signal's, else 0.
class SimulatedValues {
 public:
  /// Keeps references into `simulation`.
  explicit SimulatedValues(const SimulationDescription& simulation);

  /// Holds the values that the items have in a request.
  void Hold(const std::vector<ItemDescription>& items, base::ByteView request);
  /// Counts the requests that were held, so that prepared answers know when they are stale.
  std::uint64_t HoldCount() const { return hold_count_; }

  /// The signal that moves the item; null when it stands still, as texts do.
  const SignalDescription* MovingSignal(const ItemDescription& item) const;
  /// Puts an item that stands still into a message that is long enough; what cannot be coded is left as it
  /// is.
  void Put(const ItemDescription& item, base::ByteBuffer& message) const;

 private:
  std::unordered_map<std::string_view, const SignalDescription*> signals_;
  std::unordered_map<std::string, base::Variant> held_;
  std::uint64_t hold_count_ = 0;
};

}  // namespace korval::ecu
