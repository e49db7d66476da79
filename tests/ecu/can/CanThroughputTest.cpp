// SPDX-License-Identifier: MIT
// How much of the bus the transport protocol uses, against what the bus can carry, both in model time.
#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "tests/ecu/can/CanBench.h"

namespace korval::ecu {
namespace {

constexpr std::size_t kLongest = 4095;
constexpr std::size_t kConsecutiveFrames = 585;  // ceil((4095 - 6) / 7)

// The simulated ECU answers 21 03 with as many bytes as a message can have.
std::string LongAnswer() {
  std::string answer = "6103";
  while (answer.size() < 2 * kLongest) answer += "A5";
  return answer;
}

std::string Simulation() {
  return "<Simulation><Answer Request='2103' Response='" + LongAnswer() + "'/></Simulation>";
}

base::Duration TimeOf(CanBench& bench, const std::string& request) {
  const base::TimePoint start = bench.loop->Now();
  EXPECT_EQ(bench.Send(request), LongAnswer());
  return bench.loop->Now() - start;
}

void Report(const std::string& name, base::Duration used, base::Duration limit) {
  const auto bytes_per_second = [](base::Duration time) {
    return std::to_string(kLongest * 1000000000 / static_cast<std::size_t>(time.count()));
  };
  testing::Test::RecordProperty(name, bytes_per_second(used) + " of " + bytes_per_second(limit) + " byte/s");
  std::cout << name << ": " << bytes_per_second(used) << " of " << bytes_per_second(limit) << " byte/s\n";
}

TEST(CanThroughputTest, WithoutSeparationTheBusIsUsedToNinetyFivePercent) {
  CanBench bench(CanBench::kIdentifiers, Simulation());
  const CanFrame full({0x7E0, false}, std::array<std::uint8_t, 8>{});
  // Request, first frame, flow control and the consecutive frames back to back.
  const base::Duration limit = (3 + kConsecutiveFrames) * bench.bus.TimeOf(full);
  const base::Duration used = TimeOf(bench, "2103");
  EXPECT_GE(used, limit);
  EXPECT_LE(used, limit * 105 / 100);
  Report("StMin0BlockSize0", used, limit);
}

TEST(CanThroughputTest, SeparationAndBlocksCostWhatTheyAskFor) {
  CanBench bench(std::string(CanBench::kIdentifiers) + "StMinUs='500' BlockSize='8'", Simulation());
  const CanFrame full({0x7E0, false}, std::array<std::uint8_t, 8>{});
  const std::size_t flow_controls = 1 + (kConsecutiveFrames - 1) / 8;
  const std::size_t gaps = kConsecutiveFrames - flow_controls;
  const base::Duration limit = (2 + flow_controls + kConsecutiveFrames) * bench.bus.TimeOf(full) +
                               gaps * std::chrono::microseconds(500);
  const base::Duration used = TimeOf(bench, "2103");
  EXPECT_GE(used, limit);
  EXPECT_LE(used, limit * 105 / 100);
  Report("StMin500usBlockSize8", used, limit);
}

TEST(CanThroughputTest, ShortExchangesFollowEachOtherWithoutAGap) {
  CanBench bench;
  const CanFrame full({0x7E0, false}, std::array<std::uint8_t, 8>{});
  constexpr int kExchanges = 1000;
  for (int i = 0; i < kExchanges; ++i) ASSERT_EQ(bench.Send("2101"), "61010019");
  EXPECT_LE(bench.loop->Now(), base::TimePoint(2 * kExchanges * bench.bus.TimeOf(full) * 105 / 100));
}

}  // namespace
}  // namespace korval::ecu
