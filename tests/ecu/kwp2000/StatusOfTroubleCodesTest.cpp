// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/kwp2000/Kwp2000Dialect.h"
#include "ecu/kwp2000/StatusOfTroubleCodes.h"

namespace korval::ecu {
namespace {

std::string Next(const StatusOfTroubleCodes& reading) { return base::HexText(reading.NextRequest()); }

void Take(StatusOfTroubleCodes& reading, const std::string& answer) {
  reading.Take(base::ByteBuffer::FromHex(answer).View());
}

std::string FailureOf(StatusOfTroubleCodes& reading, const std::string& answer) {
  try {
    Take(reading, answer);
  } catch (const base::Failure& failure) {
    EXPECT_EQ(failure.Number(), kAnswerTooShort);
    return failure.Description();
  }
  return "none";
}

TEST(StatusOfTroubleCodesTest, AnAnswerWithAllRecordsEndsIt) {
  StatusOfTroubleCodes reading;
  EXPECT_EQ(Next(reading), "17FF00");
  EXPECT_EQ(reading.Announced(), 0U);
  Take(reading, "5702012360ABCD21");
  EXPECT_EQ(reading.Announced(), 2U);
  EXPECT_EQ(reading.Codes(), (std::vector<TroubleCode>{{0x0123, 0x60}, {0xABCD, 0x21}}));
  EXPECT_EQ(Next(reading), "");
}

TEST(StatusOfTroubleCodesTest, NoTroubleCodesNeedNoSecondRequest) {
  StatusOfTroubleCodes reading;
  Take(reading, "5700");
  EXPECT_TRUE(reading.Codes().empty());
  EXPECT_EQ(Next(reading), "");
}

TEST(StatusOfTroubleCodesTest, TheRestIsAskedForUntilAllHaveCome) {
  StatusOfTroubleCodes reading;
  Take(reading, "5703012360");
  EXPECT_EQ(Next(reading), "17FFFF");
  Take(reading, "570301246001256199");
  EXPECT_EQ(Next(reading), "") << "what is behind the last record is none";
  EXPECT_EQ(reading.Codes(), (std::vector<TroubleCode>{{0x0123, 0x60}, {0x0124, 0x60}, {0x0125, 0x61}}));
}

TEST(StatusOfTroubleCodesTest, AFirstAnswerMayHaveNoRecordYet) {
  StatusOfTroubleCodes reading;
  Take(reading, "5701");
  EXPECT_EQ(Next(reading), "17FFFF");
  Take(reading, "5701012360");
  EXPECT_EQ(reading.Codes(), (std::vector<TroubleCode>{{0x0123, 0x60}}));
}

TEST(StatusOfTroubleCodesTest, AnAnswerThatIsTooShortEndsItAndWhatCameBeforeCounts) {
  StatusOfTroubleCodes without_number;
  EXPECT_EQ(FailureOf(without_number, "57"), "service 17 must answer at least 2 bytes");
  EXPECT_EQ(Next(without_number), "");
  StatusOfTroubleCodes cut;
  EXPECT_EQ(FailureOf(cut, "57020123600124"), "the answer of service 17 ends before DTC record 2");
  EXPECT_EQ(cut.Codes(), (std::vector<TroubleCode>{{0x0123, 0x60}}));
  EXPECT_EQ(Next(cut), "");
  for (const char* without_record : {"57", "5702"}) {
    StatusOfTroubleCodes endless;
    Take(endless, "5702");
    EXPECT_EQ(FailureOf(endless, without_record), "the answer of service 17 ends before DTC record 1");
  }
}

TEST(StatusOfTroubleCodesTest, IsHowTheDialectReadsThem) {
  EXPECT_EQ(base::HexText(Kwp2000().ReadTroubleCodes()->NextRequest()), "17FF00");
  EXPECT_EQ(Kwp2000().Identification().ToHex(), "2180");
}

}  // namespace
}  // namespace korval::ecu
