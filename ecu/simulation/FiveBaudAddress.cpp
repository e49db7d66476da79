// SPDX-License-Identifier: MIT
#include "ecu/simulation/FiveBaudAddress.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace korval::ecu {
namespace {

constexpr std::size_t kBits = 10;
constexpr base::Duration kBitTime = base::Duration(kFiveBaudAddressTime) / kBits;
constexpr base::Duration kTolerance = kBitTime / 4;

// Start bit, eight bits from the least significant, stop bit. True: low.
std::array<bool, kBits> LowBits(std::uint8_t address) {
  std::array<bool, kBits> low{true};
  for (std::size_t bit = 0; bit < 8; ++bit) low.at(bit + 1) = ((address >> bit) & 1) == 0;
  return low;
}

}  // namespace

bool IsFiveBaudAddress(const std::vector<base::TimePoint>& lows, std::uint8_t address) {
  const std::array<bool, kBits> low = LowBits(address);
  std::array<bool, kBits> seen{};
  for (const base::TimePoint time : lows) {
    const base::Duration since = time - lows.front();
    const auto bit = static_cast<std::size_t>((since + kBitTime / 2) / kBitTime);
    const base::Duration off = since - static_cast<std::int64_t>(bit) * kBitTime;
    if (bit >= kBits || !low.at(bit) || std::chrono::abs(off) > kTolerance) return false;
    seen.at(bit) = true;
  }
  for (std::size_t bit = 0; bit < kBits; ++bit) {
    const bool goes_low = low.at(bit) && (bit == 0 || !low.at(bit - 1));
    if (goes_low && !seen.at(bit)) return false;
  }
  return true;
}

}  // namespace korval::ecu
