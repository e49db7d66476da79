// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "ecu/kline/KLineFrame.h"

namespace korval::ecu {

/// What an ECU announces in its two key bytes (ISO 14230-2): the header forms that it understands and the set
/// of times that it keeps. Key byte 1, from the least significant bit: length in the format byte, length
/// byte, header without addresses, header with addresses, extended times, normal times, 1, odd parity. Key
/// byte 2 is 8F. D0 8F announces nothing: what the ECU understands is not in its key bytes.
class KeyBytes {
 public:
  /// The bytes of an ECU that announces everything, as assumed without an initialisation.
  static KeyBytes Any() { return {0xEF, kSecond}; }
  /// None when the bytes are not those of ISO 14230, wrong parity apart.
  static std::optional<KeyBytes> Read(std::uint8_t first, std::uint8_t second);

  /// The header for a message of that length, with addresses where the ECU understands them; none when the
  /// ECU takes no message that long.
  std::optional<HeaderForm> FormFor(std::size_t message_length) const;
  bool HasExtendedTimes() const { return (first_ & kTimes) == kExtendedTimes && AnnouncesSomething(); }
  bool HasRightParity() const;

 private:
  static constexpr std::uint8_t kSecond = 0x8F;
  static constexpr unsigned kLengthInFormat = 0x01;
  static constexpr unsigned kLengthByte = 0x02;
  static constexpr unsigned kWithoutAddresses = 0x04;
  static constexpr unsigned kWithAddresses = 0x08;
  static constexpr unsigned kTimes = 0x30;
  static constexpr unsigned kExtendedTimes = 0x10;
  static constexpr unsigned kAlwaysSet = 0x40;
  static constexpr unsigned kParity = 0x80;
  static constexpr unsigned kNothing = 0x50;

  KeyBytes(std::uint8_t first, std::uint8_t second) : first_(first), second_(second) {}
  bool IsIso14230() const;
  bool AnnouncesSomething() const { return (first_ & ~kParity) != kNothing; }

  unsigned first_;
  unsigned second_;
};

}  // namespace korval::ecu
