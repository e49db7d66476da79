// SPDX-License-Identifier: MIT
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "base/XmlFile.h"
#include "ecu/ecufile/EcuFile.h"

namespace korval::ecu {
namespace {

using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::SizeIs;

std::shared_ptr<const EcuDescription> Load(const std::string& content) {
  return ReadEcuFile(base::LoadXmlText("<xml xmlns:qor='urn:korval:ecu'>" + content + "</xml>", "ecu"));
}

std::shared_ptr<const EcuDescription> LoadTarget(const std::string& function,
                                                 const std::string& requests = "") {
  return Load("<qor:Target>" + function + "<Requests>" + requests + "</Requests></qor:Target>");
}

std::vector<std::string> Names(const std::vector<ItemDescription>& items) {
  std::vector<std::string> names;
  for (const auto& item : items) names.push_back(item.name);
  return names;
}

TEST(EcuDescriptionTest, FunctionAsGiven) {
  const auto ecu = LoadTarget(
      "<Function Name='ABS' Ecu='Brake control' Protocol='DiagOnCAN' Address='28' Tester='F5' Init='slow' "
      "Baud='9600' RequestId='18DA28F1' ResponseId='18DAF128' Session='89' KeepAliveMs='500' P2Ms='70' "
      "P3Ms='100' P4Ms='10' StMinMs='5' BlockSize='8'/>");
  const FunctionDescription& function = ecu->Function();
  EXPECT_EQ(function.name, "ABS");
  EXPECT_EQ(function.ecu, "Brake control");
  EXPECT_EQ(function.protocol, "DiagOnCAN");
  EXPECT_EQ(function.address, 0x28);
  EXPECT_EQ(function.tester, 0xF5);
  EXPECT_EQ(function.KLine().init, KLineDescription::Init::kSlow);
  EXPECT_EQ(function.KLine().baud, 9600);
  EXPECT_EQ(function.Can().request_id, (CanIdentifier{0x18DA28F1, true}));
  EXPECT_EQ(function.Can().response_id, (CanIdentifier{0x18DAF128, true}));
  EXPECT_EQ(function.session, 0x89);
  EXPECT_EQ(function.keep_alive, Milliseconds(500));
  EXPECT_EQ(function.timing.Value(&Timing::p2), Milliseconds(70));
  EXPECT_EQ(function.timing.Value(&Timing::p3), Milliseconds(100));
  EXPECT_EQ(function.timing.Value(&Timing::p4), Milliseconds(10));
  EXPECT_EQ(function.Can().st_min_ms, 5);
  EXPECT_EQ(function.Can().block_size, 8);
}

TEST(EcuDescriptionTest, FunctionByDefaultAndWithUnusableAttributes) {
  for (const char* element :
       {"<Function Name='ENGINE'/>",
        "<Function Name='ENGINE' Address='100' Tester='XY' Init='?' Baud='0' RequestId='' Session='1FF' "
        "KeepAliveMs='-1' P2Ms='0' P3Ms='x' P4Ms='99999' StMinMs='128' BlockSize='256'/>"}) {
    const FunctionDescription function = LoadTarget(element)->Function();
    EXPECT_EQ(function.ecu, "ENGINE") << element;
    EXPECT_EQ(function.protocol, "KWP2000") << element;
    EXPECT_EQ(function.address, 0x10) << element;
    EXPECT_EQ(function.tester, 0xF1) << element;
    EXPECT_EQ(function.KLine().init, KLineDescription::Init::kFast) << element;
    EXPECT_EQ(function.KLine().baud, 10400) << element;
    EXPECT_FALSE(function.Can().request_id) << element;
    EXPECT_FALSE(function.session) << element;
    EXPECT_EQ(function.keep_alive, Milliseconds(2000)) << element;
    EXPECT_EQ(function.timing.Value(&Timing::p2), Milliseconds(150)) << element;
    EXPECT_EQ(function.timing.Value(&Timing::p3), Milliseconds(55)) << element;
    EXPECT_EQ(function.timing.Value(&Timing::p4), Milliseconds(5)) << element;
    EXPECT_FALSE(function.Can().st_min_ms) << element;
    EXPECT_FALSE(function.Can().block_size) << element;
  }
}

TEST(EcuDescriptionTest, FileWithoutFunctionIsRefused) {
  for (const char* content : {"", "<qor:Target/>", "<qor:Target><Function/></qor:Target>"}) {
    try {
      Load(content);
      ADD_FAILURE() << content;
    } catch (const base::Failure& failure) {
      EXPECT_EQ(failure.Number(), kNoEcuFile);
    }
  }
}

TEST(EcuDescriptionTest, RequestsInTheOrderOfTheFile) {
  const auto ecu =
      LoadTarget("<Function Name='F'/>",
                 "<Request Name='READ'><Sent Bytes='21 01'/><Received MinBytes='7'>"
                 "<DataItem Name='A' FirstByte='3'/><DataItem Name='B' FirstByte='4' Unit='V'/></Received>"
                 "</Request><Request Name='WRITE'><Sent Bytes='3b1000'><DataItem Name='C' FirstByte='3'/>"
                 "</Sent></Request>");
  ASSERT_THAT(ecu->Requests(), SizeIs(2));
  const RequestDescription& read = ecu->Requests()[0];
  EXPECT_EQ(read.name, "READ");
  EXPECT_EQ(read.sent.ToHex(), "2101");
  EXPECT_EQ(read.min_bytes, 7U);
  EXPECT_THAT(Names(read.Received()), ElementsAre("A", "B"));
  EXPECT_EQ(read.Received()[1].unit, "V");
  EXPECT_THAT(read.sent_items, IsEmpty());
  const RequestDescription& write = ecu->Requests()[1];
  EXPECT_EQ(write.sent.ToHex(), "3B1000");
  EXPECT_EQ(write.min_bytes, 1U);
  EXPECT_THAT(Names(write.sent_items), ElementsAre("C"));
  EXPECT_THAT(write.Received(), IsEmpty());
}

TEST(EcuDescriptionTest, SecondTargetAddsItsRequestsAndTheFirstFunctionServes) {
  const auto ecu = Load(
      "<qor:Target><Function Name='ONE'/><Requests><Request Name='A'/></Requests></qor:Target>"
      "<qor:Target><Function Name='TWO'/><Requests><Request Name='B'/></Requests></qor:Target>");
  EXPECT_EQ(ecu->Function().name, "ONE");
  ASSERT_THAT(ecu->Requests(), SizeIs(2));
  EXPECT_EQ(ecu->Requests()[1].name, "B");
}

class UnusableItemTest : public testing::TestWithParam<const char*> {};

TEST_P(UnusableItemTest, IsLeftOut) {
  const auto ecu =
      LoadTarget("<Function Name='F'/>", "<Request Name='R'><Sent Bytes='2101'/><Received><DataItem " +
                                             std::string(GetParam()) +
                                             "/><DataItem Name='Good' FirstByte='3'/></Received></Request>");
  EXPECT_THAT(Names(ecu->Requests().at(0).Received()), ElementsAre("Good"));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, UnusableItemTest,
    testing::Values("FirstByte='3'", "Name='' FirstByte='3'", "Name='X'", "Name='X' FirstByte='0'",
                    "Name='X' FirstByte='-1'", "Name='X' FirstByte='4096'",
                    "Name='X' FirstByte='99999999999999999999'", "Name='X' FirstByte='three'",
                    "Name='X' FirstByte='3' BitsCount='0'", "Name='X' FirstByte='3' BitsCount='-8'",
                    "Name='X' FirstByte='3' BitsCount='65'", "Name='X' FirstByte='3' BitsCount='1000000000'",
                    "Name='X' FirstByte='3' BitsCount='1000000000' Coding='bytes'",
                    "Name='X' FirstByte='4095' BitsCount='16'", "Name='X' FirstByte='3' BitsCount='eight'",
                    "Name='X' FirstByte='3' BitOffset='8'", "Name='X' FirstByte='3' BitOffset='-1'",
                    "Name='X' FirstByte='3' Step='wide'", "Name='X' FirstByte='3' Offset=''",
                    "Name='X' FirstByte='3' ByteOrder='middle'", "Name='X' FirstByte='3' Step='0'",
                    "Name='X' FirstByte='3' Coding='gray'",
                    "Name='X' FirstByte='3' BitsCount='24' Coding='float'",
                    "Name='X' FirstByte='3' BitsCount='12' Coding='ascii'",
                    "Name='X' FirstByte='3' BitOffset='4' BitsCount='16' Coding='bytes'",
                    "Name='X' FirstByte='3' BitsCount='12' ByteOrder='little'",
                    "Name='X' FirstByte='3' BitOffset='4' BitsCount='16' ByteOrder='little'"));

TEST(EcuDescriptionTest, LengthOfAnAnswerThatIsNoNumberAsksForOneByte) {
  for (const char* length : {"many", "-1", "0", "4096", "1000000000"}) {
    const auto ecu =
        LoadTarget("<Function Name='F'/>", "<Request Name='R'><Sent Bytes='2101'/><Received MinBytes='" +
                                               std::string(length) + "'/></Request>");
    EXPECT_EQ(ecu->Requests().at(0).min_bytes, 1U) << length;
  }
}

TEST(EcuDescriptionTest, TextWithoutANumberIsLeftOut) {
  const auto ecu =
      LoadTarget("<Function Name='F'/>",
                 "<Request Name='R'><Received><DataItem Name='A' FirstByte='3'><Text Value='x'>bad</Text>"
                 "<Text>bad</Text><Text Value='7'>seven</Text></DataItem></Received></Request>");
  const auto& texts = ecu->Requests().at(0).Received().at(0).texts;
  EXPECT_THAT(texts, ElementsAre(Field(&ItemDescription::NamedValue::text, "seven")));
}

TEST(EcuDescriptionTest, RequestWithoutUsableBytesSendsNothingAndOneWithoutNameIsLeftOut) {
  const auto ecu =
      LoadTarget("<Function Name='F'/>",
                 "<Request Name='A'><Sent Bytes='2'/></Request><Request Name='B'><Sent Bytes='ZZ'/></Request>"
                 "<Request Name='C'/><Request><Sent Bytes='2101'/></Request>");
  ASSERT_THAT(ecu->Requests(), SizeIs(3));
  for (const auto& request : ecu->Requests()) EXPECT_TRUE(request.sent.Empty()) << request.name;
}

TEST(EcuDescriptionTest, BytesThatTheFileLeavesOutAreZeroUpToAKLineMessage) {
  const auto ecu =
      LoadTarget("<Function Name='F'/>",
                 "<Request Name='R'><Sent Bytes='3B10'><DataItem Name='A' FirstByte='3' BitsCount='16'/>"
                 "<DataItem Name='Far' FirstByte='4000'/></Sent></Request>");
  EXPECT_EQ(ecu->Requests().at(0).sent.ToHex(), "3B100000");
  EXPECT_THAT(Names(ecu->Requests().at(0).sent_items), ElementsAre("A"));
}

TEST(EcuDescriptionTest, ReferenceDataInTheOrderOfTheFile) {
  const auto ecu = Load(
      "<qor:Target><Function Name='F'/><ReferenceData><Item Name='B' Value='1'/><Item "
      "Name='A'/></ReferenceData>"
      "</qor:Target>");
  EXPECT_THAT(ecu->ReferenceData(), ElementsAre("B", "A"));
  EXPECT_THAT(LoadTarget("<Function Name='F'/>")->ReferenceData(), IsEmpty());
}

TEST(EcuDescriptionTest, SimulationAsGiven) {
  const auto ecu = Load(
      "<qor:Target><Function Name='F'/></qor:Target><Simulation LatencyMs='20' DtcPerAnswer='3'>"
      "<Signal Item='S' Wave='sine' Min='-1.5' Max='2' PeriodMs='100'/><Signal Item='C' Wave='constant' "
      "Value='90'/>"
      "<Dtc Code='1234' Status='A0'/><Answer Request='21 80' Response='6180'/><Answer Request='2181' "
      "Response=''/>"
      "<Fault Request='READ' Number='2042' Times='2'/><Fault Init='1' Number='1015'/></Simulation>");
  const SimulationDescription& simulation = ecu->Simulation();
  EXPECT_EQ(simulation.latency, Milliseconds(20));
  EXPECT_EQ(simulation.dtc_per_answer, 3U);
  ASSERT_THAT(simulation.signals, SizeIs(2));
  EXPECT_EQ(simulation.signals[0].wave, SignalDescription::Wave::kSine);
  EXPECT_EQ(simulation.signals[0].min, -1.5);
  EXPECT_EQ(simulation.signals[0].max, 2);
  EXPECT_EQ(simulation.signals[0].period, Milliseconds(100));
  EXPECT_EQ(simulation.signals[1].value, "90");
  ASSERT_THAT(simulation.dtcs, SizeIs(1));
  EXPECT_EQ(simulation.dtcs[0].code, 0x1234);
  EXPECT_EQ(simulation.dtcs[0].status, 0xA0);
  ASSERT_THAT(simulation.answers, SizeIs(2));
  EXPECT_EQ(simulation.answers[0].request.ToHex(), "2180");
  EXPECT_TRUE(simulation.answers[1].response.Empty());
  ASSERT_THAT(simulation.faults, SizeIs(2));
  EXPECT_EQ(simulation.faults[0].times, 2);
  EXPECT_EQ(simulation.faults[1].request, "");
  EXPECT_EQ(simulation.faults[1].number, 1015);
  EXPECT_EQ(simulation.faults[1].times, 1);
}

TEST(EcuDescriptionTest, UnusableSimulationFallsBackToTheDefaults) {
  const auto ecu = Load(
      "<qor:Target><Function Name='F'/></qor:Target><Simulation LatencyMs='-5' DtcPerAnswer='0'>"
      "<Signal Item='S' PeriodMs='0' Min='a'/><Dtc Code='zz'/><Dtc Code='12345' Status='100'/>"
      "<Answer Request='' Response='61'/><Answer Request='2180' Response='6'/><Fault Number='2000'/>"
      "</Simulation>");
  const SimulationDescription& simulation = ecu->Simulation();
  EXPECT_EQ(simulation.latency, Milliseconds(0));
  EXPECT_EQ(simulation.dtc_per_answer, 80U);
  EXPECT_EQ(simulation.signals.at(0).period, Milliseconds(1000));
  EXPECT_THAT(simulation.dtcs, IsEmpty());
  EXPECT_THAT(simulation.answers, IsEmpty());
  EXPECT_THAT(simulation.faults, IsEmpty());
}

}  // namespace
}  // namespace korval::ecu
