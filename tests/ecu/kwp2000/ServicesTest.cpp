// SPDX-License-Identifier: MIT
#include <string>

#include <gtest/gtest.h>

#include "ecu/kwp2000/Services.h"

namespace korval::ecu {
namespace {

bool Reads(const std::string& request) { return IsReading(base::ByteBuffer::FromHex(request).View()); }
bool HasAnswer(const std::string& request) { return IsAnswered(base::ByteBuffer::FromHex(request).View()); }

TEST(ServicesTest, RequestsWhoseRepetitionChangesNothingAreReading) {
  for (const char* request : {"010C", "03", "0902", "1201", "13FF00", "17FF00", "1802FF00", "1902FF", "1A90",
                              "2101", "22F190", "23001000 10", "3E", "3E01", "3E00", "3301"}) {
    std::string bytes = request;
    std::erase(bytes, ' ');
    EXPECT_TRUE(Reads(bytes)) << request;
  }
}

TEST(ServicesTest, WritesResetsRoutinesClearsAndSessionsAreNot) {
  for (const char* request :
       {"04",   "08",     "1081", "1101", "14FF00", "20",   "2701", "2E1000", "2F1000", "300107", "3101",
        "3201", "340000", "3601", "37",   "3B1005", "3D00", "81",   "82",     "8303",   "85",     "86"}) {
    EXPECT_FALSE(Reads(request)) << request;
  }
}

TEST(ServicesTest, TheRestOfTheTroubleCodesIsAnotherPartWhenItIsAskedForAgain) {
  EXPECT_FALSE(Reads("17FFFF"));
  EXPECT_FALSE(Reads("1802FFFF"));
  EXPECT_FALSE(Reads("13FFFF"));
  EXPECT_TRUE(Reads("22FFFF"));
}

TEST(ServicesTest, TesterPresentWithoutAResponseIsNotAnswered) {
  EXPECT_FALSE(HasAnswer("3E02"));
  for (const char* request : {"3E", "3E01", "3E00", "2102", "3E0202"}) EXPECT_TRUE(HasAnswer(request));
}

}  // namespace
}  // namespace korval::ecu
