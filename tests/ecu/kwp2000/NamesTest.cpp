// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "ecu/kwp2000/Names.h"

namespace korval::ecu {
namespace {

TEST(NamesTest, NegativeAnswerNamesServiceAndResponseCode) {
  EXPECT_EQ(NegativeAnswerText(0x21, 0x31), "readDataByLocalIdentifier (21): requestOutOfRange (31)");
  EXPECT_EQ(NegativeAnswerText(0x3B, 0x33), "writeDataByLocalIdentifier (3B): securityAccessDenied (33)");
  EXPECT_EQ(NegativeAnswerText(0xA5, 0x9F), "service (A5): manufacturerSpecific (9F)");
  EXPECT_EQ(NegativeAnswerText(0x10, 0x05), "startDiagnosticSession (10): reserved (05)");
}

TEST(NamesTest, ServicesAndResponseCodesAsInTheStandard) {
  EXPECT_EQ(ServiceName(0x14), "clearDiagnosticInformation");
  EXPECT_EQ(ServiceName(0x17), "readStatusOfDiagnosticTroubleCodes");
  EXPECT_EQ(ServiceName(0x18), "readDiagnosticTroubleCodesByStatus");
  EXPECT_EQ(ServiceName(0x1A), "readEcuIdentification");
  EXPECT_EQ(ServiceName(0x30), "inputOutputControlByLocalIdentifier");
  EXPECT_EQ(ServiceName(0x3E), "testerPresent");
  EXPECT_EQ(ResponseCodeName(0x10), "generalReject");
  EXPECT_EQ(ResponseCodeName(0x11), "serviceNotSupported");
  EXPECT_EQ(ResponseCodeName(0x21), "busy-repeatRequest");
  EXPECT_EQ(ResponseCodeName(0x78), "requestCorrectlyReceived-ResponsePending");
}

}  // namespace
}  // namespace korval::ecu
