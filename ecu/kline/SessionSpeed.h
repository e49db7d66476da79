// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "base/ByteBuffer.h"

namespace korval::ecu {

/// The bit/s that a speed byte behind startDiagnosticSession stands for: 01 to 05 are 9600, 19200, 38400,
/// 57600 and 115200; of the others the three most significant bits are an exponent and the rest a mantissa,
/// 200 * (32 + mantissa) * 2^exponent, as in 87: 124800. 00 stands for none.
std::optional<std::int32_t> BitsPerSecond(std::uint8_t speed);

/// The speed behind a positive answer to `request`, which is not empty: a diagnostic session (10) has its own
/// or the usual one, its end (20) brings back the usual one, and everything else leaves it as it is.
std::int32_t SpeedAfter(base::ByteView request, std::int32_t usual, std::int32_t current);

}  // namespace korval::ecu
