// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/ByteBuffer.h"
#include "ecu/description/ItemDescription.h"
#include "ecu/description/Lazy.h"

namespace korval::ecu {

/// One request of an ECU function.
struct RequestDescription {
  using Items = std::vector<ItemDescription>;

  const Items& Received() const { return received.Get(); }
  /// Makes the bytes as long as the items need, with zero bytes; items too far behind the bytes go.
  void CompleteSent();

  std::string name;
  /// At most 4095 bytes and as long as its items need; empty when no bytes to send are known.
  base::ByteBuffer sent;
  bool no_answer = false;     ///< the ECU does not answer it
  std::size_t min_bytes = 1;  ///< of the answer, 1 to 4095
  Items sent_items;
  Lazy<Items> received;
};

}  // namespace korval::ecu
