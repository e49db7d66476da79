// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/trace/RepeatedLines.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::host {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kBad[] = "erreur de checksum \r\n";

class RepeatedLinesTest : public ::testing::Test {
 protected:
  void Append(const std::string& line, std::size_t times = 1) {
    for (std::size_t i = 0; i < times; ++i) lines_.Append(line);
  }
  /// As many as are written as they are: the first, and the repetitions.
  void UseUp() {
    Append(kBad, RepeatedLines::kWritten + 1);
    EXPECT_THAT(written_, SizeIs(RepeatedLines::kWritten + 1));
    written_.clear();
  }

  tests::ManualEventLoop loop_;
  std::vector<std::string> written_;
  RepeatedLines lines_{loop_, [this](std::string_view text) { written_.emplace_back(text); }};
};

TEST_F(RepeatedLinesTest, WritesTheFirstOnesAsTheyAre) {
  Append(kBad, 2);
  EXPECT_THAT(written_, ElementsAre(kBad, kBad));
}

TEST_F(RepeatedLinesTest, PutsTheBeginningOfALineToItsEnd) {
  for (std::size_t i = 0; i < RepeatedLines::kWritten + 2; ++i) {
    Append("get parameter(1,N) ok");
    Append("   value = 800\r\n");
  }
  Append("no line end");
  EXPECT_THAT(written_, SizeIs(RepeatedLines::kWritten + 1));
  EXPECT_EQ(written_.back(), "get parameter(1,N) ok   value = 800\r\n");
  lines_.Finish();
  EXPECT_EQ(written_.back(), "no line end");
}

TEST_F(RepeatedLinesTest, CountsAFloodAndSaysSoInAPause) {
  UseUp();
  Append(kBad, 10000);
  EXPECT_THAT(written_, IsEmpty());
  loop_.Advance(seconds(1));
  EXPECT_THAT(written_, ElementsAre("(repeated 10000 times: erreur de checksum )\r\n"));
  loop_.Advance(seconds(100));
  EXPECT_THAT(written_, SizeIs(1));
}

TEST_F(RepeatedLinesTest, SaysSoBeforeSomethingElseIsWritten) {
  UseUp();
  Append(kBad, 3);
  Append("close WinSock\r\n");
  EXPECT_THAT(written_, ElementsAre("(repeated 3 times: erreur de checksum )\r\n", "close WinSock\r\n"));
}

TEST_F(RepeatedLinesTest, CountsLinesThatTakeTurns) {
  for (int i = 0; i < 500; ++i) {
    Append("Error : Break Received\r\n");
    Append("Error : Framing Error\r\n");
  }
  EXPECT_THAT(written_, SizeIs(RepeatedLines::kWritten + 2));
  written_.clear();
  lines_.Finish();
  EXPECT_THAT(written_, ElementsAre("(repeated 399 times: Error : Break Received)\r\n",
                                    "(repeated 399 times: Error : Framing Error)\r\n"));
}

TEST_F(RepeatedLinesTest, WritesEverythingWhereSomethingNewComesAgainAndAgain) {
  for (int i = 0; i < 1000; ++i) {
    Append(kBad);
    Append("Error : Invalid asap frame (" + std::to_string(i) + ")\r\n");
  }
  EXPECT_THAT(written_, SizeIs(2000));
}

TEST_F(RepeatedLinesTest, SaysOnceAMinuteThatAFloodGoesOn) {
  UseUp();
  for (int i = 0; i < 240; ++i) {
    Append(kBad);
    loop_.Advance(milliseconds(500));
  }
  const std::vector<std::string> as_they_are(119, kBad);  // one each second
  std::vector<std::string> counts;
  for (const std::string& text : written_)
    if (text != kBad) counts.push_back(text);
  EXPECT_THAT(written_, SizeIs(as_they_are.size() + counts.size()));
  EXPECT_THAT(counts, ElementsAre("(repeated 62 times: erreur de checksum )\r\n"));
}

TEST_F(RepeatedLinesTest, GivesBackOneASecond) {
  UseUp();
  loop_.Advance(seconds(3));
  Append(kBad, 5);
  EXPECT_THAT(written_, ElementsAre(kBad, kBad, kBad));
}

TEST_F(RepeatedLinesTest, QuotesOfALongLineTheBeginning) {
  const std::string line = "Error : Invalid asap frame (" + std::string(65000, 'x') + ")\r\n";
  Append(line, RepeatedLines::kWritten + 2);
  written_.clear();
  lines_.Finish();
  EXPECT_THAT(written_, ElementsAre("(repeated once: Error : Invalid asap frame (" + std::string(92, 'x') +
                                    " ...)\r\n"));
}

}  // namespace
}  // namespace korval::host
