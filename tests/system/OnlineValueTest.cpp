// SPDX-License-Identifier: MIT
// Parameter for value acquisition and get online value.
#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string kMarker = FromHex("FF000000");

class OnlineValueTest : public ServerBench {
 protected:
  /// An ECU that is not reached before its first value is asked for: its selection identifies nothing.
  void WriteShyEngine(const std::string& name, const std::string& faults) const {
    WritePair(name,
              EcuFile("Name=\"SHY\" Ecu=\"Shy engine\" Protocol=\"DiagOnCAN\"", kEngineRequests,
                      kEngineAnswers + faults),
              kEngineData);
  }
  static std::string Fault(const std::string& request, int number, int times) {
    return "<Fault Request=\"" + request + "\" Number=\"" + std::to_string(number) + "\" Times=\"" +
           std::to_string(times) + "\"/>";
  }
  static std::string Online(const RawClient& client) { return Hex(client.Ask(Request(kGetOnlineValue))); }
  static std::string Values(const std::vector<std::string>& values) {
    std::string data = Word(static_cast<unsigned>(values.size()));
    for (const std::string& value : values) data += value;
    return Hex(Reply(kGetOnlineValue, kSuccess, data));
  }
  /// What was traced since the last acquisition or selection, up to now.
  Lines TakeTrace(const RawClient& client) {
    client.Ask(HarmlessRequest());
    Lines lines = server_->TraceUntil("switching offline/online(7)");
    lines.pop_back();
    return lines;
  }
};

TEST_F(OnlineValueTest, ValuesComeInTheOrderOfTheirChoice) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(client.Ask(AcquisitionRequest(1, {"STATE", "N", "TMOT"}))),
            Hex(Reply(kSetAcquisition, kSuccess)));
  EXPECT_EQ(Online(client), Hex(FromHex("0016 0013 0000 0003 40000000 44480000 42B40000 C728")));
}

TEST_F(OnlineValueTest, WithoutAChoiceTheCountIsZero) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Online(client), Hex(FromHex("000A 0013 0000 0000 001D")));
  Succeed(client, AcquisitionRequest(1, {}));
  EXPECT_EQ(Online(client), Values({}));
}

TEST_F(OnlineValueTest, WhatIsNoNumberIsTheMarker) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  Succeed(client, AcquisitionRequest(1, {"SW", "BEYOND", "NUMTEXT", "CUT"}));
  EXPECT_EQ(Online(client), Values({kMarker, kMarker, Real(12.5F), FromHex("BF800000")}));
}

TEST_F(OnlineValueTest, NamesInBracketsAreTheEcusOwn) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  Succeed(client, AcquisitionRequest(1, {"qor(EngineSpeed)", "TMOT"}));
  EXPECT_EQ(Online(client), Values({Real(800), Real(90)}));
  EXPECT_EQ(Hex(client.Ask(AcquisitionRequest(1, {"qor(Nobody)"}))),
            Hex(ErrorReply(kSetAcquisition, 12003, "set acq para : Error unknown data (qor(Nobody)")));
  for (const std::string name : {"qor(", "qor(EngineSpeed", "QOR(EngineSpeed)"})
    EXPECT_EQ(Hex(client.Ask(AcquisitionRequest(1, {name}))),
              Hex(ErrorReply(kSetAcquisition, 12003, "set acq para : Error unknown data (" + name)));
}

TEST_F(OnlineValueTest, AnItemWithoutAReferenceMarkIsReachedByItsOwnName) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  Succeed(client, AcquisitionRequest(1, {"qor(HiddenValue)", "qor(IdleSpeed)"}));
  Succeed(client, SetRequest(1, "IdleSpeed", 930));
  EXPECT_EQ(Online(client), Values({Real(0), Real(930)}));
}

TEST_F(OnlineValueTest, AnUnknownNameEndsTheChoiceAndWhatStoodBeforeItStays) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(client.Ask(AcquisitionRequest(1, {"N", "NOPE", "TMOT"}))),
            Hex(ErrorReply(kSetAcquisition, 12003, "set acq para : Error unknown data (NOPE")));
  EXPECT_EQ(Online(client), Values({Real(800)}));
  Succeed(client, AcquisitionRequest(1, {"TMOT"}));
  EXPECT_EQ(Online(client), Values({Real(800), Real(90)}));
}

TEST_F(OnlineValueTest, ACountThatPromisesTooMuchIsAnErrorAndWhatWasThereStays) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  const std::string reply =
      client.Ask(Request(kSetAcquisition, Word(1) + Word(100) + Word(65535) + Text("N") + Text("TMOT")));
  EXPECT_EQ(StatusOf(reply), kError);
  EXPECT_EQ(ErrorNumberOf(reply), 1U);
  EXPECT_THAT(ErrorTextOf(reply), HasSubstr("set acq para"));
  EXPECT_EQ(Online(client), Values({Real(800), Real(90)}));
}

TEST_F(OnlineValueTest, ATruncatedChoiceIsAnErrorRecord) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  for (const std::string& fields : {std::string(), Word(1), Word(1) + Word(100)}) {
    const std::string reply = client.Ask(Request(kSetAcquisition, fields));
    EXPECT_EQ(StatusOf(reply), kError);
    EXPECT_EQ(ErrorNumberOf(reply), 1U);
    EXPECT_THAT(ErrorTextOf(reply), HasSubstr("set acq para"));
  }
}

TEST_F(OnlineValueTest, AnUnknownFileIsAlwaysTraced) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  TakeTrace(client);
  const std::string text = "set acq para(9,100,...) : Error unknown Emulator LUN";
  EXPECT_EQ(Hex(client.Ask(AcquisitionRequest(9, {"N"}))), Hex(ErrorReply(kSetAcquisition, 1, text)));
  EXPECT_THAT(TakeTrace(client), ElementsAre(text));
}

TEST_F(OnlineValueTest, AnEmptyChoiceIsTracedWithItsBlank) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(client.Ask(AcquisitionRequest(9, {}))), Hex(Reply(kSetAcquisition, kSuccess)));
  EXPECT_EQ(server_->WaitFor("set acq para("), "set acq para(9 ,100,[])");
}

TEST_F(OnlineValueTest, ARepeatedNameIsTracedAndAnsweredOnce) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  Succeed(client, AcquisitionRequest(1, {"N", "qor(CoolantTemp)", "N", "qor(CoolantTemp)", "CUT"}));
  client.Ask(HarmlessRequest());
  const Lines lines = server_->TraceUntil("switching");
  EXPECT_THAT(lines, ::testing::Contains(HasSubstr("N [duplicate data]")));
  EXPECT_THAT(lines, ::testing::Contains(HasSubstr("qor(CoolantTemp) [duplicate data] ")));
  EXPECT_EQ(Online(client), Values({Real(800), Real(90), Real(-1)}));
  Succeed(client, AcquisitionRequest(1, {"CUT"}));
  EXPECT_EQ(Online(client), Values({Real(800), Real(90), Real(-1)}));
}

TEST_F(OnlineValueTest, RepeatsAndUnknownNamesAreNotTracedWithoutDebugging) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  TakeTrace(client);
  Succeed(client, AcquisitionRequest(1, {"N", "N"}));
  EXPECT_EQ(StatusOf(client.Ask(AcquisitionRequest(1, {"NOPE"}))), kError);
  Online(client);
  EXPECT_THAT(TakeTrace(client), ElementsAre());
}

TEST_F(OnlineValueTest, OnlyTheCurrentEcuIsRead) {
  WritePair("brakes",
            EcuFile("Name=\"BRAKES\"", R"(<Request Name="R"><Sent Bytes="2101"/><Received MinBytes="3">
                      <DataItem Name="Pressure" Ref="1" FirstByte="3"/></Received></Request>)",
                    R"(<Answer Request="2101" Response="610115"/>)"),
            {{"Pressure", "P"}});
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Select(client, "brakes.xml", "MAP"), 2U);
  Succeed(client, AcquisitionRequest(1, {"N"}));
  Succeed(client, AcquisitionRequest(2, {"P"}));
  EXPECT_EQ(Online(client), Values({Real(800), kMarker}));
}

TEST_F(OnlineValueTest, RequestsThatCarryNoChosenValueAreNotSent) {
  WriteShyEngine("shy", Fault("READ_FLAGS", 2044, 1000) + Fault("READ_SILENT", 2044, 1000));
  Start();
  const RawClient client = Connect();
  OpenPair(client, "shy");
  Succeed(client, AcquisitionRequest(1, {"N"}));
  EXPECT_EQ(Online(client), Values({Real(800)}));
}

class ReconnectTest : public OnlineValueTest, public ::testing::WithParamInterface<int> {};

TEST_P(ReconnectTest, ALostLinkIsInitialisedAnewOnceAndTheRequestsRepeated) {
  WriteShyEngine("shy", Fault("READ_ENGINE", GetParam(), 1));
  Start();
  const RawClient client = Connect();
  OpenPair(client, "shy");
  Succeed(client, AcquisitionRequest(1, {"N", "CUT"}));
  TakeTrace(client);
  EXPECT_EQ(Online(client), Values({Real(800), Real(-1)}));
  EXPECT_THAT(TakeTrace(client), ElementsAre("GetOnlineValue : Reinit Ecu Shy engine"));
  EXPECT_EQ(Online(client), Values({Real(800), Real(-1)}));
  EXPECT_THAT(TakeTrace(client), ElementsAre());
}

TEST_P(ReconnectTest, AFailureOfTheRepetitionIsNotReportedAndTheOtherRequestsAreRead) {
  WriteShyEngine("shy", Fault("READ_ENGINE", GetParam(), 2));
  Start();
  const RawClient client = Connect();
  OpenPair(client, "shy");
  Succeed(client, AcquisitionRequest(1, {"N", "CUT"}));
  TakeTrace(client);
  EXPECT_EQ(Online(client), Values({kMarker, Real(-1)}));
  EXPECT_THAT(TakeTrace(client), ElementsAre("GetOnlineValue : Reinit Ecu Shy engine"));
  EXPECT_EQ(Online(client), Values({Real(800), Real(-1)}));
}

INSTANTIATE_TEST_SUITE_P(Numbers, ReconnectTest, ::testing::Values(1000, 2000, 2042, 2045, 2046));

TEST_F(OnlineValueTest, AnotherFailureIsReportedAtOnce) {
  WriteShyEngine("shy", Fault("READ_ENGINE", 2044, 1));
  Start();
  const RawClient client = Connect();
  OpenPair(client, "shy");
  Succeed(client, AcquisitionRequest(1, {"N", "CUT"}));
  TakeTrace(client);
  const std::string reply = client.Ask(Request(kGetOnlineValue));
  ExpectError(reply, 2044, "an odd failure");
  EXPECT_THAT(TakeTrace(client),
              ElementsAre("GetOnlineValue error : Function='SHY' Request='READ_ENGINE'  Error=" +
                          ErrorTextOf(reply)));
  EXPECT_EQ(Online(client), Values({Real(800), Real(-1)}));
}

TEST_F(OnlineValueTest, AnEcuThatStaysSilentIsTheMarkerAfterTheRepetition) {
  WriteShyEngine("shy", "");
  Start();
  const RawClient client = Connect();
  OpenPair(client, "shy");
  Succeed(client, AcquisitionRequest(1, {"SILENT", "N"}));
  TakeTrace(client);
  EXPECT_EQ(Online(client), Values({kMarker, Real(800)}));
  EXPECT_THAT(TakeTrace(client), ElementsAre("GetOnlineValue : Reinit Ecu Shy engine"));
}

TEST_F(OnlineValueTest, AReinitialisationThatFailsIsReportedWithTheEcu) {
  WriteShyEngine("shy", Fault("READ_ENGINE", 2042, 1));
  WritePair("brakes",
            EcuFile("Name=\"ABS\" Ecu=\"Brakes\" Protocol=\"DiagOnCAN\"", kEngineRequests,
                    kEngineAnswers + R"(<Fault Init="1" Number="1015" Times="1"/>)"),
            kEngineData);
  Start();
  const RawClient client = Connect();
  OpenPair(client, "shy");
  EXPECT_EQ(Select(client, "brakes.xml", "MAP"), 2U);
  Succeed(client, AcquisitionRequest(1, {"N"}));
  TakeTrace(client);
  const std::string reply = client.Ask(Request(kGetOnlineValue));
  ExpectError(reply, 1015, "the bus is dead");
  EXPECT_THAT(TakeTrace(client),
              ElementsAre("GetOnlineValue : Reinit Ecu Shy engine", "GetOnlineValue : Reinit Ecu Brakes",
                          "GetOnlineValue Function='ABS' Name='Brakes'  Init Error=" + ErrorTextOf(reply)));
  EXPECT_EQ(Online(client), Values({Real(800)}));
}

TEST_F(OnlineValueTest, TheCanMessagingIsNeverInitialisedAnew) {
  WriteDescription("can.xml", DescriptionFile(Section("MAP", "lost_ecu.xml", kEngineData) +
                                              Section("AUTOCAN", "messaging.xml", {})));
  WriteEcu("lost_ecu.xml", EcuFile("Name=\"LOST\" Ecu=\"Lost engine\"", kEngineRequests,
                                   kEngineAnswers + Fault("READ_ENGINE", 2045, 1)));
  WriteEcu("messaging.xml", R"(<xml><messaging Bitrate="500000"><Frame Id="1A0" Name="Wheel" CycleMs="10">
    <DataItem Name="WheelSpeed" FirstByte="1"/></Frame></messaging></xml>)");
  Start();
  const RawClient client = Connect();
  Identify(client);
  EXPECT_EQ(Select(client, "can.xml", "MAP"), 1U);
  Succeed(client, AcquisitionRequest(1, {"N"}));
  EXPECT_THAT(TakeTrace(client), ::testing::Contains(StartsWith("   messaging automatic loading : ")));
  EXPECT_EQ(Online(client), Values({Real(800)}));
  EXPECT_THAT(TakeTrace(client), ElementsAre("GetOnlineValue : Reinit Ecu Lost engine"));
}

TEST_F(OnlineValueTest, EachValueIsTracedWithDebugging) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  Succeed(client, AcquisitionRequest(1, {"N", "SW"}));
  Online(client);
  EXPECT_THAT(server_->WaitFor("Data : "), HasSubstr("800"));
  EXPECT_THAT(server_->WaitFor("Data : "), AllOf(StartsWith("Data : "), HasSubstr("KV1.2")));
}

TEST_F(OnlineValueTest, AThousandValuesComeInOneReply) {
  std::string items;
  DataNames data;
  std::vector<std::string> names;
  std::string answer = "6101";
  for (int index = 0; index < 1000; ++index) {
    const std::string name = "V" + std::to_string(index);
    items += "<DataItem Name=\"" + name + "\" Ref=\"1\" FirstByte=\"" + std::to_string(index + 3) + "\"/>";
    data.emplace_back(name, name);
    names.push_back(name);
    answer += Hex(std::string(1, static_cast<char>(static_cast<unsigned char>(index))));
  }
  WritePair("wide",
            EcuFile("Name=\"WIDE\"",
                    "<Request Name=\"R\"><Sent Bytes=\"2101\"/><Received MinBytes=\"3\">" + items +
                        "</Received></Request>",
                    "<Answer Request=\"2101\" Response=\"" + answer + "\"/>"),
            data);
  Start();
  const RawClient client = Connect();
  OpenPair(client, "wide");
  Succeed(client, AcquisitionRequest(1, names));
  std::vector<std::string> values;
  for (int index = 0; index < 1000; ++index) values.push_back(Real(static_cast<float>(index % 256)));
  EXPECT_EQ(Online(client), Values(values));
}

}  // namespace
}  // namespace korval::tests
