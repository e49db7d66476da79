// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace korval::base {

/// Line settings of a serial port.
struct SerialSettings {
  enum class Parity { kNone, kEven, kOdd, kMark, kSpace };
  enum class StopBits { kOne, kOneAndHalf, kTwo };

  std::int32_t speed = 9600;  // bits a second
  Parity parity = Parity::kNone;
  std::int32_t data_bits = 8;  // 4 to 8
  StopBits stop_bits = StopBits::kOne;

  friend bool operator==(const SerialSettings&, const SerialSettings&) = default;
};

/// Reads a settings text: speed (1 to 4000000), parity letter (n, e, o, m or s, either case), data bits (4
/// to 8) and stop bits (1, 1.5 or 2), separated by commas, as in "9600,n,8,1". Raises Failure for any
/// other text, naming the part that is wrong.
SerialSettings ReadSerialSettings(const std::string& text);

}  // namespace korval::base
