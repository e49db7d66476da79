// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/ByteBuffer.h"
#include "ecu/kline/KeyBytes.h"
#include "ecu/link/ServiceNames.h"

namespace korval::ecu {

inline constexpr std::uint8_t kStartCommunication = 0x81;

/// What an ECU says to the start of the communication.
struct StartAnswer {
  std::optional<KeyBytes> key_bytes;  ///< none: it refuses, or is of another standard
  std::string text;                   ///< why there are none, or what is wrong with them all the same

  /// The positive or negative answer to startCommunication.
  static StartAnswer Of(base::ByteView answer, const ServiceNames& names);
  static StartAnswer Of(std::uint8_t first_key_byte, std::uint8_t second_key_byte);
};

}  // namespace korval::ecu
