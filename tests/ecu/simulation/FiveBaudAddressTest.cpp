// SPDX-License-Identifier: MIT
#include <chrono>
#include <vector>

#include <gtest/gtest.h>

#include "ecu/simulation/FiveBaudAddress.h"

namespace korval::ecu {
namespace {

bool Is(std::uint8_t address, const std::vector<int>& milliseconds) {
  std::vector<base::TimePoint> lows;
  for (const int time : milliseconds) lows.emplace_back(std::chrono::milliseconds(7000 + time));
  return IsFiveBaudAddress(lows, address);
}

TEST(FiveBaudAddressTest, LowsOfABreakAndOfBytesAreTheAddress) {
  EXPECT_TRUE(Is(0x33, {0, 600, 1400}));
  EXPECT_TRUE(Is(0x33, {0, 600, 800, 1400, 1600}));
  EXPECT_TRUE(Is(0x33, {0, 610, 1370}));
  EXPECT_TRUE(Is(0x00, {0}));
  EXPECT_TRUE(Is(0xFF, {0}));
}

TEST(FiveBaudAddressTest, OtherLowsAreNot) {
  EXPECT_FALSE(Is(0x33, {0}));
  EXPECT_FALSE(Is(0x33, {0, 600}));
  EXPECT_FALSE(Is(0x33, {0, 400, 1400}));
  EXPECT_FALSE(Is(0x33, {0, 700, 1400}));
  EXPECT_FALSE(Is(0x33, {0, 600, 1400, 2600}));
  EXPECT_FALSE(Is(0x10, {0, 600, 1400}));
}

}  // namespace
}  // namespace korval::ecu
