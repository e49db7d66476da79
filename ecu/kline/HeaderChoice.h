// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "ecu/description/KLineDescription.h"
#include "ecu/kline/KLineFrame.h"
#include "ecu/kline/KeyBytes.h"

namespace korval::ecu {

/// The header of a request of that length, as the file fixes it, else as the key bytes say; none when the ECU
/// takes no message that long.
std::optional<HeaderForm> ChooseHeader(KLineDescription::Header fixed, const KeyBytes& key_bytes,
                                       std::size_t message_length);

/// The header that the file fixes; none when it leaves that to the key bytes.
std::optional<HeaderForm> FixedHeader(KLineDescription::Header fixed);

}  // namespace korval::ecu
