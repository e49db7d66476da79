// SPDX-License-Identifier: MIT
// How close the link comes to what ISO 14230-2 allows, by the model clock.
#include <chrono>
#include <iostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "KLineBench.h"
#include "ecu/kline/KLineTiming.h"
#include "tests/support/Await.h"

namespace korval::ecu {
namespace {

using std::chrono::milliseconds;

constexpr std::chrono::nanoseconds kByteTime{961538};  // ten bits at 10400 bit/s

// The shortest time from the end of one answer to the end of the next.
base::Duration ShortestCycle(std::int64_t request_bytes, std::int64_t answer_bytes, milliseconds p2_min,
                             milliseconds p3_min, milliseconds p4_min) {
  return p3_min + request_bytes * kByteTime + (request_bytes - 1) * p4_min + p2_min +
         answer_bytes * kByteTime;
}

TEST(KLineTimingTest, RequestTakesNoMoreThanFivePercentAboveTheShortestTimeAllowed) {
  struct Row {
    const char* function;
    milliseconds p2_min, p3_min, p4_min;
  };
  const std::vector<Row> rows{
      {"", milliseconds(25), milliseconds(55), milliseconds(5)},
      {"P4Ms='0'", milliseconds(25), milliseconds(55), milliseconds(0)},
      {"P3Ms='10' P4Ms='0'", milliseconds(25), milliseconds(10), milliseconds(0)},
      {"P2MinMs='1' P3Ms='1' P4Ms='0'", milliseconds(1), milliseconds(1), milliseconds(0)}};
  for (const Row& row : rows) {
    KLineBench bench(row.function);
    EXPECT_EQ(bench.NumberOf("2101"), "6101");
    const base::TimePoint before = bench.loop->Now();
    EXPECT_EQ(bench.NumberOf("2101"), "6101");
    const base::Duration took = bench.loop->Now() - before;
    const base::Duration shortest = ShortestCycle(6, 10, row.p2_min, row.p3_min, row.p4_min);
    EXPECT_GE(took, shortest - kByteTime / 10) << row.function;
    EXPECT_LE(took, shortest + shortest / 20) << row.function;
  }
}

TEST(KLineTimingTest, FastInitialisationTakesNoMoreThanFivePercentAboveTheShortestTimeAllowed) {
  KLineBench bench;
  tests::Await(bench.Engine()->Initialise());
  const base::Duration shortest =
      milliseconds(300 + 50) + 5 * kByteTime + 4 * milliseconds(5) + milliseconds(25) + 7 * kByteTime;
  EXPECT_GE(bench.loop->Now(), base::TimePoint(shortest - kByteTime / 10));
  EXPECT_LE(bench.loop->Now(), base::TimePoint(shortest + shortest / 20));
}

TEST(KLineTimingTest, SilenceInFrontOfARequestIsNeverShorterThanP3AndBetweenItsBytesThanP4) {
  KLineBench bench;
  for (int request = 0; request < 20; ++request) EXPECT_EQ(bench.NumberOf("2101"), "6101");
  const auto& log = bench.line->log;
  for (std::size_t place = 1; place < log.size(); ++place) {
    if (log[place].who != MemoryLine::Who::kTester) continue;
    const base::Duration silence = log[place].begin - log[place - 1].end;
    const bool first_byte = log[place - 1].who == MemoryLine::Who::kEcu;
    EXPECT_GE(silence, first_byte ? milliseconds(55) : milliseconds(5)) << place;
  }
}

// 250 bytes of values in an answer of a whole frame.
TEST(KLineTimingTest, ValuesPerSecondComeUpToTheLimitOfTheLine) {
  static constexpr std::int64_t kValues = 250;
  std::string response = "6101";
  for (std::int64_t value = 0; value < kValues; ++value) response += "5A";
  KLineBench bench("", "><Answer Request='2101' Response='" + response + "'/>");
  EXPECT_EQ(bench.Send("2101"), response);
  const base::TimePoint before = bench.loop->Now();
  static constexpr int kRequests = 100;
  for (int request = 0; request < kRequests; ++request) EXPECT_EQ(bench.Send("2101"), response);
  const std::chrono::duration<double> took = bench.loop->Now() - before;
  const std::chrono::duration<double> limit =
      kRequests * ShortestCycle(6, 252 + 5, milliseconds(25), milliseconds(55), milliseconds(5));
  const double reached = kRequests * static_cast<double>(kValues) / took.count();
  const double possible = kRequests * static_cast<double>(kValues) / limit.count();
  std::cout << "K-line at 10400 bit/s: " << static_cast<int>(reached) << " of " << static_cast<int>(possible)
            << " possible values of one byte a second\n";
  EXPECT_GE(reached, 0.95 * possible);
}

TEST(KLineTimingTest, KeyBytesWithExtendedTimesChangeWhatTheFileLeavesOpen) {
  const auto extended = *KeyBytes::Read(0xD9, 0x8F);
  const KLineTiming open = KLineTiming::Of(Timing(), extended);
  EXPECT_EQ(open.p2_max, milliseconds(1000));
  EXPECT_EQ(open.p3_min, milliseconds(0));
  Timing file;
  file.p2 = 70;
  file.p3 = 80;
  const KLineTiming said = KLineTiming::Of(file, extended);
  EXPECT_EQ(said.p2_max, milliseconds(70));
  EXPECT_EQ(said.p3_min, milliseconds(80));
}

TEST(KLineTimingTest, AgreedTimesAreReadInTheirSteps) {
  KLineTiming timing = KLineTiming::Of(Timing(), KeyBytes::Any());
  timing.Change(std::vector<std::uint8_t>{0x03, 0x02, 0x09, 0x14, 0x01});
  EXPECT_EQ(timing.p2_min, std::chrono::microseconds(1500));
  EXPECT_EQ(timing.p2_max, milliseconds(50));
  EXPECT_EQ(timing.p3_min, std::chrono::microseconds(4500));
  EXPECT_EQ(timing.p3_max, milliseconds(5000));
  EXPECT_EQ(timing.p4_min, std::chrono::microseconds(500));
  timing.Change(std::vector<std::uint8_t>{0, 0xF2, 0, 0, 0});
  EXPECT_EQ(timing.p2_max, milliseconds(12800));
  timing.Change(std::vector<std::uint8_t>{0, 0xFF, 0, 0xFF, 0});
  EXPECT_EQ(timing.p2_max, timing.p2_star);
  EXPECT_EQ(timing.p3_max, base::Duration::max());
  timing.Change(std::vector<std::uint8_t>{0, 1});
  EXPECT_EQ(timing.p2_max, timing.p2_star);
}

}  // namespace
}  // namespace korval::ecu
