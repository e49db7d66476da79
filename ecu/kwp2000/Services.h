// SPDX-License-Identifier: MIT
#pragma once

#include "base/ByteBuffer.h"

namespace korval::ecu {

/// How many bytes behind the service the positive answer repeats: the identifier of what is read or set.
std::size_t RepeatedBytes(std::uint8_t service);

/// Whether the request only reads, so that sending it once more changes nothing: neither in the ECU nor in
/// what the next request gets. `request` is not empty.
bool IsReading(base::ByteView request);

/// Whether the ECU answers the request; testerPresent with "no response required" (3E 02) it does not.
/// `request` is not empty.
bool IsAnswered(base::ByteView request);

}  // namespace korval::ecu
