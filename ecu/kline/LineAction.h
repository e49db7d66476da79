// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>

#include "base/ByteBuffer.h"

namespace korval::ecu {

/// What a state machine does to the line.
struct LineAction {
  enum class Kind { kPullLow, kLetRise, kWrite, kSetSpeed };
  Kind kind;
  base::ByteBuffer bytes;  ///< to be written
  std::int32_t baud = 0;   ///< to be set
};

/// In their order.
using LineActions = std::deque<LineAction>;

}  // namespace korval::ecu
