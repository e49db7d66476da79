// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/ByteBuffer.h"
#include "diag/viator3.h"
#include "ecu/description/ErrorTable.h"

namespace korval::ecu {

struct FrameToSend {
  std::int32_t identifier = 0;
  base::ByteBuffer data;  ///< 0 to 8 bytes
};

/// Reads what a client wrote. Raises Failure 2012 for data that is none.
std::vector<FrameToSend> ReadCanFrames(std::span<const viator3::CanFrame> frames, const ErrorTable& errors);

}  // namespace korval::ecu
