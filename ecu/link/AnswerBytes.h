// SPDX-License-Identifier: MIT
// The bytes in which the answers of all diagnostic protocols agree whose messages begin with a service:
//   positive   service + 40 ...
//   negative   7F service code ...
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/ByteBuffer.h"

namespace korval::ecu {

inline constexpr std::uint8_t kPositiveOffset = 0x40;
inline constexpr std::uint8_t kNegativeResponse = 0x7F;
/// Codes of a negative answer: ask again later, and: the answer follows later.
inline constexpr std::uint8_t kBusyRepeatRequest = 0x21;
inline constexpr std::uint8_t kResponsePending = 0x78;

/// Messages are not empty.
inline bool IsPositiveTo(std::uint8_t service, base::ByteView message) {
  return message[0] == static_cast<std::uint8_t>(service + kPositiveOffset);
}
inline bool IsNegativeTo(std::uint8_t service, base::ByteView message) {
  static constexpr std::size_t kLength = 3;
  return message.size() >= kLength && message[0] == kNegativeResponse && message[1] == service;
}
/// A negative answer that only asks for time.
inline bool IsPendingTo(std::uint8_t service, base::ByteView message) {
  return IsNegativeTo(service, message) && message[2] == kResponsePending;
}

}  // namespace korval::ecu
