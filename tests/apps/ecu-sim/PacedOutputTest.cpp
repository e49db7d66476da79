// SPDX-License-Identifier: MIT
#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "apps/ecu-sim/PacedOutput.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::apps {
namespace {

using std::chrono::milliseconds;

struct PacedOutputTest : public ::testing::Test {
  std::shared_ptr<tests::ManualEventLoop> loop = std::make_shared<tests::ManualEventLoop>();
  std::vector<std::pair<base::TimePoint, std::string>> written;
  PacedOutput output{
      loop, [this](base::ByteView bytes) { written.emplace_back(loop->Now(), base::HexText(bytes)); }};

  void Send(const std::string& hex, std::int32_t baud) {
    output.Send(base::ByteBuffer::FromHex(hex).View(), baud);
  }
};

TEST_F(PacedOutputTest, EachByteArrivesWhenItsLastBitDoes) {
  Send("010203", 1000);
  Send("04", 500);
  loop->Advance(std::chrono::seconds(1));
  const std::vector<std::pair<base::TimePoint, std::string>> expected{
      {base::TimePoint(milliseconds(10)), "01"},
      {base::TimePoint(milliseconds(20)), "02"},
      {base::TimePoint(milliseconds(30)), "03"},
      {base::TimePoint(milliseconds(50)), "04"}};
  EXPECT_EQ(written, expected);
}

TEST_F(PacedOutputTest, SilenceBetweenTwoPiecesStays) {
  Send("01", 1000);
  loop->Advance(milliseconds(100));
  Send("02", 1000);
  loop->Advance(milliseconds(100));
  ASSERT_EQ(written.size(), 2U);
  EXPECT_EQ(written.back().first, base::TimePoint(milliseconds(110)));
  EXPECT_EQ(loop->PendingEvents(), 0U);
}

}  // namespace
}  // namespace korval::apps
