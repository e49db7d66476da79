// SPDX-License-Identifier: MIT
#include "ecu/kline/KeyBytes.h"

#include <bit>

namespace korval::ecu {

std::optional<KeyBytes> KeyBytes::Read(std::uint8_t first, std::uint8_t second) {
  const KeyBytes bytes(first, second);
  return bytes.IsIso14230() ? std::optional(bytes) : std::nullopt;
}

bool KeyBytes::IsIso14230() const {
  return ((second_ ^ kSecond) & ~kParity) == 0 && (first_ & kAlwaysSet) != 0;
}

bool KeyBytes::HasRightParity() const {
  return std::popcount(first_) % 2 == 1 && std::popcount(second_) % 2 == 1;
}

// An ECU that announces neither kind of length, or neither kind of header, leaves it to the tester.
std::optional<HeaderForm> KeyBytes::FormFor(std::size_t message_length) const {
  const bool addresses = (first_ & kWithAddresses) != 0 || (first_ & kWithoutAddresses) == 0;
  const bool length_in_format = (first_ & kLengthInFormat) != 0 || (first_ & kLengthByte) == 0;
  const bool length_byte = (first_ & kLengthByte) != 0 || (first_ & kLengthInFormat) == 0;
  if (length_in_format && message_length <= kLongestLengthInFormat) return HeaderForm{addresses, false};
  if (length_byte && message_length <= kLongestKLineMessage) return HeaderForm{addresses, true};
  return std::nullopt;
}

}  // namespace korval::ecu
