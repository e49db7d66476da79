// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "base/ByteBuffer.h"

namespace korval::ecu {

/// The highest identifiers of ISO 11898-1's base and extended format.
inline constexpr std::uint32_t kLastBaseIdentifier = 0x7FF;
inline constexpr std::uint32_t kLastExtendedIdentifier = 0x1FFFFFFF;

struct CanIdentifier {
  std::uint32_t number = 0;
  bool extended = false;  ///< 29 bit

  friend bool operator==(const CanIdentifier&, const CanIdentifier&) = default;
  friend auto operator<=>(const CanIdentifier&, const CanIdentifier&) = default;
};

/// A data frame of classic CAN (ISO 11898-1).
struct CanFrame {
  static constexpr std::size_t kMostBytes = 8;

  CanFrame() = default;
  /// Bytes beyond the eighth are left out.
  CanFrame(CanIdentifier id, base::ByteView bytes)
      : identifier(id), length(static_cast<std::uint8_t>(std::min(bytes.size(), kMostBytes))) {
    std::copy_n(bytes.begin(), length, data.begin());
  }

  base::ByteView Bytes() const { return base::ByteView(data).first(length); }
  friend bool operator==(const CanFrame&, const CanFrame&) = default;

  CanIdentifier identifier;
  std::uint8_t length = 0;  ///< 0 to 8
  std::array<std::uint8_t, kMostBytes> data{};
};

}  // namespace korval::ecu
