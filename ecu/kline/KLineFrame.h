// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "base/ByteBuffer.h"

namespace korval::ecu {

inline constexpr std::size_t kLongestKLineMessage = 255;
/// Above this the length needs a byte of its own.
inline constexpr std::size_t kLongestLengthInFormat = 63;

/// Which of the four headers of ISO 14230-2 a frame has.
struct HeaderForm {
  bool addresses = true;     ///< target and source behind the format byte
  bool length_byte = false;  ///< the length in a byte of its own, in front of the message
  bool functional = false;   ///< the target is a group of ECUs

  friend bool operator==(const HeaderForm&, const HeaderForm&) = default;
};

/// The frame of a message of 1 to 255 bytes, or to 63 when the length stands in the format byte:
///   format · [target · source] · [length] · message · checksum (sum of all bytes before it).
base::ByteBuffer BuildFrame(HeaderForm form, std::uint8_t target, std::uint8_t source,
                            base::ByteView message);

}  // namespace korval::ecu
