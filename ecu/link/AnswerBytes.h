// SPDX-License-Identifier: MIT
// The bytes in which the answers of all diagnostic protocols agree whose messages begin with a service:
//   positive   service + 40 ...
//   negative   7F service code
#pragma once

#include <cstddef>
#include <cstdint>

namespace korval::ecu {

inline constexpr std::uint8_t kPositiveOffset = 0x40;
inline constexpr std::uint8_t kNegativeResponse = 0x7F;
inline constexpr std::size_t kNegativeLength = 3;
/// Codes of a negative answer: ask again later, and: the answer follows later.
inline constexpr std::uint8_t kBusyRepeatRequest = 0x21;
inline constexpr std::uint8_t kResponsePending = 0x78;

}  // namespace korval::ecu
