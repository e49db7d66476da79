// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/ByteBuffer.h"

namespace korval::ecu {

/// A run of bits in a message, as a data item has them. A number has 1 to 64.
struct BitField {
  /// Big-endian: of the most significant bit, counted from the most significant of byte 1. Little-endian: of
  /// the least significant bit, counted from the least significant of byte 1.
  std::size_t first_bit = 0;
  std::size_t bits = 8;
  bool little_endian = false;

  std::size_t FirstByte() const { return first_bit / 8; }
  /// Length of the shortest message that holds the bits.
  std::size_t BytesNeeded() const { return (first_bit + bits + 7) / 8; }

  /// The message is long enough.
  std::uint64_t Read(base::ByteView message) const;
  /// The lowest bits of `raw`. The message is long enough.
  void Write(std::uint64_t raw, base::ByteBuffer& message) const;
};

/// The lowest bits as a number in two's complement.
std::int64_t SignExtended(std::uint64_t raw, std::size_t bits);

/// Four bits a digit; none when one of them is no digit.
std::optional<std::uint64_t> FromBcd(std::uint64_t raw);
/// The lowest 16 digits.
std::uint64_t ToBcd(std::uint64_t number);

}  // namespace korval::ecu
