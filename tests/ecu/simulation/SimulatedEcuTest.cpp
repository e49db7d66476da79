// SPDX-License-Identifier: MIT
#include <chrono>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "base/XmlFile.h"
#include "ecu/ecufile/EcuFile.h"
#include "ecu/simulation/SimulatedEcu.h"

namespace korval::ecu {
namespace {

using base::ByteBuffer;
using std::chrono::milliseconds;

constexpr char kRequests[] =
    "<Request Name='READ'><Sent Bytes='2101'/><Received MinBytes='7'>"
    "<DataItem Name='Speed' FirstByte='3' BitsCount='16' Step='0.25'/>"
    "<DataItem Name='Temp' FirstByte='5' Offset='-40'/>"
    "<DataItem Name='State' FirstByte='6' BitOffset='6' BitsCount='2'><Text "
    "Value='2'>running</Text></DataItem>"
    "</Received></Request>"
    "<Request Name='WRITE'><Sent Bytes='3B1000FF'><DataItem Name='Temp' FirstByte='3' Offset='-40'/></Sent>"
    "<Received MinBytes='2'/></Request>"
    "<Request Name='NOTE'><Sent Bytes='3B112020'><DataItem Name='Note' FirstByte='3' BitsCount='16' "
    "Coding='ascii'/></Sent>"
    "<Received MinBytes='2'/></Request>"
    "<Request Name='READ_NOTE'><Sent Bytes='1A90'/><Received MinBytes='4'>"
    "<DataItem Name='Note' FirstByte='3' BitsCount='16' Coding='ascii'/></Received></Request>"
    "<Request Name='COMMON'><Sent Bytes='22F190'/><Received MinBytes='5'>"
    "<DataItem Name='Common' FirstByte='4' BitsCount='16'/></Received></Request>"
    "<Request Name='FAN'><Sent Bytes='30010700'><DataItem Name='Fan' FirstByte='4'/></Sent></Request>";

class SimulatedEcuTest : public testing::Test {
 protected:
  void Start(const std::string& simulation, const std::string& requests = kRequests) {
    ecu_.emplace(ReadEcuFile(base::LoadXmlText(
                     "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='F'/><Requests>" + requests +
                         "</Requests></qor:Target><Simulation " + simulation + "</Simulation></xml>",
                     "ecu")),
                 base::TimePoint(milliseconds(5000)));
  }
  SimulatedEcu::Reaction React(const std::string& request, int at = 0) {
    const ByteBuffer bytes = ByteBuffer::FromHex(request);
    return ecu_->React(bytes.View(), base::TimePoint(milliseconds(5000 + at)));
  }
  std::string Answer(const std::string& request, int at = 0) {
    const auto reaction = React(request, at);
    return reaction.fault ? "fault " + std::to_string(*reaction.fault) : base::HexText(reaction.answer);
  }

 private:
  std::optional<SimulatedEcu> ecu_;

 protected:
  std::optional<std::int32_t> TakeInitFault() { return ecu_->TakeInitFault(); }
  Milliseconds Latency() { return ecu_->Latency(); }
};

TEST_F(SimulatedEcuTest, ItemsWithoutSignalAreZeroWithinTheirRange) {
  Start(">");
  EXPECT_EQ(Answer("2101"), "61010000280000");
}

TEST_F(SimulatedEcuTest, ConstantsAreNumbersOrTexts) {
  Start(
      "><Signal Item='Speed' Wave='constant' Value='800'/><Signal Item='State' Wave='constant' "
      "Value='running'/>"
      "<Signal Item='Note' Value='OK'/>");
  EXPECT_EQ(Answer("2101"), "61010C80280200");
  EXPECT_EQ(Answer("1A90"), "5A904F4B");
}

TEST_F(SimulatedEcuTest, SignalsMoveWithTheTimeSinceTheStart) {
  Start("><Signal Item='Speed' Wave='ramp' Min='0' Max='1000' PeriodMs='1000'/>");
  EXPECT_EQ(Answer("2101", 0), "61010000280000");
  EXPECT_EQ(Answer("2101", 500), "610107D0280000");
  EXPECT_EQ(Answer("2101", 750), "61010BB8280000");
  EXPECT_EQ(Answer("2101", 1000), "61010000280000");
}

TEST_F(SimulatedEcuTest, SignalBeyondTheItemStandsAtItsLimit) {
  Start(
      "><Signal Item='Speed' Wave='square' Min='-1' Max='1E9' PeriodMs='1000'/><Signal Item='Temp' "
      "Value='1000'/>");
  EXPECT_EQ(Answer("2101", 0), "61010000FF0000");
  EXPECT_EQ(Answer("2101", 500), "6101FFFFFF0000");
}

TEST_F(SimulatedEcuTest, ATextWithAMovingSignalStandsStill) {
  Start("><Signal Item='Note' Wave='ramp' Min='0' Max='9' PeriodMs='100'/>",
        "<Request Name='N'><Sent Bytes='1A90'/><Received MinBytes='12'>"
        "<DataItem Name='Note' FirstByte='3' BitsCount='80' Coding='ascii'/></Received></Request>");
  EXPECT_EQ(Answer("1A90", 50), "5A9030202020202020202020");
}

TEST_F(SimulatedEcuTest, AWrittenNumberThatIsNoneLeavesTheItemZero) {
  Start(">",
        "<Request Name='W'><Sent Bytes='3B0100000000'><DataItem Name='F' FirstByte='3' BitsCount='32' "
        "Coding='float'/></Sent></Request><Request Name='R'><Sent Bytes='2101'/><Received MinBytes='6'>"
        "<DataItem Name='F' FirstByte='3' BitsCount='32' Coding='float'/></Received></Request>");
  EXPECT_EQ(Answer("3B017FC00000"), "7B01");
  EXPECT_EQ(Answer("2101"), "610100000000");
}

TEST_F(SimulatedEcuTest, AWrittenBooleanIsOneInItemsOfOtherCodings) {
  Start(">",
        "<Request Name='W'><Sent Bytes='3B0100'><DataItem Name='B' FirstByte='3' Coding='boolean'/></Sent>"
        "</Request><Request Name='R'><Sent Bytes='2101'/><Received MinBytes='4'>"
        "<DataItem Name='B' FirstByte='3'/><DataItem Name='B' FirstByte='4' Coding='boolean'/></Received>"
        "</Request>");
  EXPECT_EQ(Answer("3B0101"), "7B01");
  EXPECT_EQ(Answer("2101"), "61010101");
}

TEST_F(SimulatedEcuTest, RequestsWithTheSameFirstBytesAreToldApartByTheirLength) {
  Start(">",
        "<Request Name='A'><Sent Bytes='3B1000'><DataItem Name='A' FirstByte='3'/></Sent></Request>"
        "<Request Name='B'><Sent Bytes='3B100000'><DataItem Name='B' FirstByte='3' BitsCount='16'/></Sent>"
        "</Request>");
  EXPECT_EQ(Answer("3B1001"), "7B10");
  EXPECT_EQ(Answer("3B100102"), "7B10");
}

TEST_F(SimulatedEcuTest, ConstantThatTheItemCannotHoldLeavesItZero) {
  Start("><Signal Item='Note' Value='much too long'/><Signal Item='Speed' Value='fast'/>");
  EXPECT_EQ(Answer("1A90"), "5A900000");
  EXPECT_EQ(Answer("2101"), "61010000280000");
}

TEST_F(SimulatedEcuTest, WrittenValueIsHeldAndReadBackInPlaceOfTheSignal) {
  Start("><Signal Item='Temp' Wave='ramp' Min='0' Max='100'/>");
  EXPECT_EQ(Answer("3B1082FF"), "7B10");
  EXPECT_EQ(Answer("2101", 700), "61010000820000");
  EXPECT_EQ(Answer("3B1083FF"), "7B10");
  EXPECT_EQ(Answer("2101", 800), "61010000830000");
  EXPECT_EQ(Answer("3B114142"), "7B11");
  EXPECT_EQ(Answer("1A90"), "5A904142");
}

TEST_F(SimulatedEcuTest, RequestIsKnownByItsBytesUpToItsFirstSentItemAndItsLength) {
  Start(">");
  EXPECT_EQ(Answer("3B100000"), "7B10");
  EXPECT_EQ(Answer("3B10AABB"), "7B10");
  EXPECT_EQ(Answer("30010755"), "7001");
  EXPECT_EQ(Answer("22F190"), "62F1900000");
  EXPECT_EQ(Answer("3B10AA"), "7F3B31");
  EXPECT_EQ(Answer("3B10AABBCC"), "7F3B31");
  EXPECT_EQ(Answer("30010855"), "7F3031");
  EXPECT_EQ(Answer("210100"), "7F2131");
}

TEST_F(SimulatedEcuTest, FirstOfTwoRequestsWithTheSameBytesServes) {
  Start(">",
        "<Request Name='A'><Sent Bytes='2101'/><Received MinBytes='3'/></Request>"
        "<Request Name='B'><Sent Bytes='2101'/><Received MinBytes='5'/></Request>");
  EXPECT_EQ(Answer("2101"), "610100");
}

TEST_F(SimulatedEcuTest, UnknownDataAndUnknownServicesAreRefused) {
  Start(">");
  for (const char* known : {"2155", "21", "3B55", "1A55", "3055", "17", "1700FF", "14", "1400FF", "18",
                            "1802FF", "10", "10815500", "3E0155", "22F191"}) {
    EXPECT_EQ(Answer(known), "7F" + std::string(known).substr(0, 2) + "31") << known;
  }
  for (const char* unknown : {"27", "2701", "00", "FF01", "7F2131", "61"}) {
    EXPECT_EQ(Answer(unknown), "7F" + std::string(unknown).substr(0, 2) + "11") << unknown;
  }
}

TEST_F(SimulatedEcuTest, SessionAndTesterPresentAreAcknowledged) {
  Start(">");
  EXPECT_EQ(Answer("1081"), "5081");
  EXPECT_EQ(Answer("3E"), "7E");
  EXPECT_EQ(Answer("3E01"), "7E");
}

TEST_F(SimulatedEcuTest, FixedAnswerGoesBeforeEverythingAndMayBeNone) {
  Start(
      "><Answer Request='2101' Response='6101EE'/><Answer Request='17FF00' Response='5700'/>"
      "<Answer Request='2180' Response=''/><Answer Request='2101' Response='61'/><Dtc Code='1234' "
      "Status='20'/>");
  EXPECT_EQ(Answer("2101"), "6101EE");
  EXPECT_EQ(Answer("17FF00"), "5700");
  EXPECT_EQ(Answer("2180"), "");
}

TEST_F(SimulatedEcuTest, TroubleCodesComeInOneAnswer) {
  Start("><Dtc Code='1234' Status='20'/><Dtc Code='5678' Status='A0'/>");
  EXPECT_EQ(Answer("17FF00"), "57021234205678A0");
  EXPECT_EQ(Answer("1802FF00"), "58021234205678A0");
}

TEST_F(SimulatedEcuTest, TroubleCodesContinueWithTheTotalInEveryAnswer) {
  Start(
      "DtcPerAnswer='2'><Dtc Code='1' Status='1'/><Dtc Code='2' Status='2'/><Dtc Code='3' Status='3'/>"
      "<Dtc Code='4' Status='4'/><Dtc Code='5' Status='5'/>");
  EXPECT_EQ(Answer("17FF00"), "5705000101000202");
  EXPECT_EQ(Answer("17FFFF"), "5705000303000404");
  EXPECT_EQ(Answer("17FFFF"), "5705000505");
  EXPECT_EQ(Answer("17FFFF"), "5705");
  EXPECT_EQ(Answer("17FF00"), "5705000101000202");
}

TEST_F(SimulatedEcuTest, ClearingLeavesNoTroubleCode) {
  Start("><Dtc Code='1234' Status='20'/>");
  EXPECT_EQ(Answer("14FF00"), "54FF00");
  EXPECT_EQ(Answer("17FF00"), "5700");
  EXPECT_EQ(Answer("17FFFF"), "5700");
}

TEST_F(SimulatedEcuTest, MoreTroubleCodesThanAByteCountsAreLeftOut) {
  std::string codes = "DtcPerAnswer='255'>";
  for (int i = 0; i < 300; ++i) codes += "<Dtc Code='1' Status='1'/>";
  Start(codes);
  const std::string answer = Answer("17FF00");
  EXPECT_EQ(answer.substr(0, 4), "57FF");
  EXPECT_EQ(answer.size(), 4U + 255 * 6);
}

TEST_F(SimulatedEcuTest, FaultsAreTakenAsOftenAsTheFileSays) {
  Start(
      "><Fault Request='READ' Number='2042' Times='2'/><Fault Request='READ' Number='1000'/>"
      "<Fault Request='WRITE' Number='2000' Times='0'/><Fault Init='1' Number='1015'/>");
  EXPECT_EQ(Answer("2101"), "fault 2042");
  EXPECT_EQ(Answer("2101"), "fault 2042");
  EXPECT_EQ(Answer("2101"), "fault 1000");
  EXPECT_EQ(Answer("2101"), "61010000280000");
  EXPECT_EQ(Answer("3B1000FF"), "7B10");
  EXPECT_EQ(TakeInitFault(), 1015);
  EXPECT_EQ(TakeInitFault(), std::nullopt);
}

TEST_F(SimulatedEcuTest, FaultKeepsTheEcuFromWorking) {
  Start("><Fault Request='WRITE' Number='2000'/>");
  EXPECT_EQ(Answer("3B1082FF"), "fault 2000");
  EXPECT_EQ(Answer("2101"), "61010000280000");
}

TEST_F(SimulatedEcuTest, LatencyIsTheFiles) {
  Start("LatencyMs='25'>");
  EXPECT_EQ(Latency(), Milliseconds(25));
}

}  // namespace
}  // namespace korval::ecu
