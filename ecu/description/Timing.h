// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>

namespace korval::ecu {

using Milliseconds = std::chrono::milliseconds;

/// Timing of the link, ISO 14230-2 clause 4.4.
struct Timing {
  Milliseconds p2{50};          ///< P2: longest wait for an answer, 1 to 60000
  Milliseconds p3{55};          ///< P3: shortest silence before the next request, 0 to 60000
  Milliseconds p4{5};           ///< P4: silence between the bytes of a request, 0 to 1000
  Milliseconds st_min{0};       ///< STmin asked of the sender (ISO 15765-2), 0 to 127
  std::int32_t block_size = 0;  ///< BS asked of the sender (ISO 15765-2), 0 to 255
};

}  // namespace korval::ecu
