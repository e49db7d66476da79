// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "base/EventLoop.h"

namespace korval::ecu {

/// How long an address at 5 bit/s is, with start and stop bit.
inline constexpr std::chrono::seconds kFiveBaudAddressTime{2};

/// Whether a line that went low at these times can have carried the address at 5 bit/s. Where it stays low
/// for several bits it may go low once, as a break does, or once a bit, as bytes 00 at a low speed do.
bool IsFiveBaudAddress(const std::vector<base::TimePoint>& lows, std::uint8_t address);

}  // namespace korval::ecu
