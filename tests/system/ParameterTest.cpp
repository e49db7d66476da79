// SPDX-License-Identifier: MIT
// Get and set parameter: values of every type, every error record, every trace.
#include <limits>

#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ParameterTest : public ServerBench {
 protected:
  static std::string Get(const RawClient& client, const std::string& name) {
    return client.Ask(GetRequest(1, name));
  }
  static std::string Set(const RawClient& client, const std::string& name, float value) {
    return client.Ask(SetRequest(1, name, value));
  }
  static std::string Values(float value) { return Hex(Reply(kGetParameter, kSuccess, FourReals(value))); }
  static std::string Refused(std::uint16_t code, const std::string& text) {
    return Hex(ErrorReply(code, 1, text));
  }
};

TEST_F(ParameterTest, GetAnswersValueMinimumMaximumAndIncrement) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(Get(client, "EngineSpeed")),
            Hex(FromHex("0018 000E 0000 44480000 44480000 44480000 00000000 CCFE")));
  EXPECT_EQ(Hex(Get(client, "CoolantTemp")), Values(90));
  EXPECT_EQ(Hex(Get(client, "EngineState")), Values(2));
}

TEST_F(ParameterTest, TrueIsMinusOne) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(Get(client, "FuelCut")), Values(-1));
}

TEST_F(ParameterTest, AShortNameServesAsWellAsTheItemsName) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(Get(client, "N")), Values(800));
  EXPECT_EQ(Hex(Get(client, "TMOT")), Values(90));
}

TEST_F(ParameterTest, AWrittenValueIsHeldAndReadBack) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(Set(client, "IdleSpeed", 850)), Hex(Reply(kSetParameter, kSuccess)));
  EXPECT_EQ(Hex(Get(client, "IdleSpeed")), Values(850));
  EXPECT_EQ(Hex(Set(client, "IDLE", 920)), Hex(Reply(kSetParameter, kSuccess)));
  EXPECT_EQ(Hex(Get(client, "IDLE")), Values(920));
}

TEST_F(ParameterTest, TextsAndMissingValuesAreAnInvalidDataType) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(Get(client, "SoftwareName")),
            Refused(kGetParameter, "get parameter(1,SoftwareName) : Invalid data type for answer"));
  EXPECT_EQ(Hex(Get(client, "BeyondAnswer")),
            Refused(kGetParameter, "get parameter(1,BeyondAnswer) : Invalid data type for answer"));
}

TEST_F(ParameterTest, AnUnknownNumberOfAFileIsNamedWithTheRequest) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  for (const unsigned lun : {0U, 2U, 65535U}) {
    const std::string number = std::to_string(lun);
    EXPECT_EQ(Hex(client.Ask(GetRequest(lun, "N"))),
              Refused(kGetParameter, "get parameter(" + number + ",N) : Error unknown Emulator LUN"));
    EXPECT_EQ(Hex(client.Ask(SetRequest(lun, "N", 12.5F))),
              Refused(kSetParameter, "set parameter(" + number + ",N,12.5) : Error unknown Emulator LUN"));
  }
}

TEST_F(ParameterTest, EveryMissingFieldOfGetIsNamed) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  const std::string no_lun =
      Refused(kGetParameter, "get parameter(lun,name) : Invalid 'lun' parameter, word expected");
  const std::string no_name =
      Refused(kGetParameter, "get parameter(lun,name) : Invalid 'name' parameter, string expected");
  EXPECT_EQ(Hex(client.Ask(Request(kGetParameter))), no_lun);
  EXPECT_EQ(Hex(client.Ask(Request(kGetParameter, Word(1)))), no_name);
  EXPECT_EQ(Hex(client.Ask(Request(kGetParameter, Word(1) + Word(2)))), no_name);
  EXPECT_EQ(Hex(client.Ask(Request(kGetParameter, Word(1) + FromHex("FFFF 4E4E")))), no_name);
}

TEST_F(ParameterTest, EveryMissingFieldOfSetIsNamed) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  const auto missing = [](const std::string& field) {
    return Refused(kSetParameter, "set parameter(lun,name,v) : Invalid " + field);
  };
  EXPECT_EQ(Hex(client.Ask(Request(kSetParameter))), missing("'lun' parameter, word expected"));
  EXPECT_EQ(Hex(client.Ask(Request(kSetParameter, Word(1)))), missing("'name' parameter, string expected"));
  EXPECT_EQ(Hex(client.Ask(Request(kSetParameter, Word(1) + FromHex("0004 4E4E")))),
            missing("'name' parameter, string expected"));
  EXPECT_EQ(Hex(client.Ask(Request(kSetParameter, Word(1) + Text("N")))),
            missing("'v' parameter, real expected"));
  EXPECT_EQ(Hex(client.Ask(Request(kSetParameter, Word(1) + Text("N") + FromHex("3F80")))),
            missing("'v' parameter, real expected"));
}

TEST_F(ParameterTest, AccessByNameThatFailsTellsWhichWay) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  struct Row {
    std::string reply;
    std::string beginning;
  };
  const std::vector<Row> rows = {
      {Get(client, "Nobody"), "Get parameter(1,Nobody) : Error = obj.Nobody  Error : "},
      {Get(client, "nobody"), "Get parameter(1,nobody) : Error = obj.nobody  Error : "},
      {Get(client, "engineSPEED"), "Get parameter(1,engineSPEED) : Error = obj.engineSPEED  Error : "},
      {Get(client, ""), "Get parameter(1,) : Error = obj.  Error : "},
      {Get(client, "SilentValue"),
       "Get parameter(1,SilentValue) : Error = obj.SilentValue  Error : the ECU keeps silent"},
      {Set(client, "Nobody", 1), "set parameter(1,Nobody,1) : Error = obj.Nobody  Error : "},
      {Set(client, "EngineSpeed", 1), "set parameter(1,EngineSpeed,1) : Error = obj.EngineSpeed  Error : "},
      {Set(client, "IdleSpeed", 99999), "set parameter(1,IdleSpeed,99999) : Error = obj.IdleSpeed  Error : "},
      {Set(client, "IdleSpeed", -10), "set parameter(1,IdleSpeed,-10) : Error = obj.IdleSpeed  Error : "},
  };
  for (const auto& [reply, beginning] : rows) {
    SCOPED_TRACE(beginning);
    ExpectError(reply, 1, beginning);
    EXPECT_GT(ErrorTextOf(reply).size(), beginning.size());
  }
}

TEST_F(ParameterTest, ARefusedValueLeavesTheOldOne) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  Set(client, "IdleSpeed", 850);
  for (const float value :
       {-10.0F, 99999.0F, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()})
    EXPECT_EQ(StatusOf(Set(client, "IdleSpeed", value)), kError) << value;
  EXPECT_EQ(Hex(Get(client, "IdleSpeed")), Values(850));
}

TEST_F(ParameterTest, TheSetTraceIsWrittenBeforeTheValueWithoutDebugging) {
  Start();
  RawClient client = Connect();
  OpenEngine(client);
  server_->WaitFor(folder_.Path("korv/engine_ecu.xml"));
  Get(client, "N");
  Get(client, "Nobody");
  client.Ask(GetRequest(9, "N"));
  client.Ask(SetRequest(9, "N", 1));
  Set(client, "IDLE", 850);
  Set(client, "Nobody", 2);
  client.Close();
  EXPECT_THAT(server_->TraceUntil("close WinSock"),
              ElementsAre("set parameter(1,IDLE,850)", "set parameter(1,Nobody,2)", "close WinSock"));
}

TEST_F(ParameterTest, ErrorsAndGoodValuesAreTracedWithDebugging) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  client.Ask(GetRequest(9, "N"));
  server_->WaitFor("get parameter(9,N) : Error unknown Emulator LUN");
  client.Ask(Request(kSetParameter, Word(1)));
  server_->WaitFor("set parameter(lun,name,v) : Invalid 'name' parameter, string expected");
  const std::string reply = Get(client, "SilentValue");
  EXPECT_EQ(server_->WaitFor("Get parameter(1,SilentValue)"), ErrorTextOf(reply));
  Get(client, "CUT");
  EXPECT_EQ(server_->WaitFor("get parameter(1,CUT)"), "get parameter(1,CUT) ok   value = True");
}

struct NumberRow {
  float value;
  std::string text;
};

TEST_F(ParameterTest, NumbersAreWrittenAsShortAsTheyReadBack) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  const std::vector<NumberRow> rows = {{12.5F, "12.5"},
                                       {0.0F, "0"},
                                       {-1.5F, "-1.5"},
                                       {0.1F, "0.1"},
                                       {0.0001F, "0.0001"},
                                       {0.00001F, "1E-05"},
                                       {9999999.0F, "9999999"},
                                       {10000000.0F, "1E+07"},
                                       {1.5E20F, "1.5E+20"},
                                       {-2.5E-10F, "-2.5E-10"},
                                       {3.4028235E38F, "3.4028235E+38"}};
  for (const auto& [value, text] : rows)
    EXPECT_EQ(Hex(client.Ask(SetRequest(9, "X", value))),
              Refused(kSetParameter, "set parameter(9,X," + text + ") : Error unknown Emulator LUN"));
}

TEST_F(ParameterTest, AnObjectIsMadeForTheSectionOnce) {
  WritePair("twice",
            EcuFile("Name=\"TWICE\" Protocol=\"DiagOnCAN\"", kEngineRequests,
                    kEngineAnswers + R"(<Fault Request="READ_ENGINE" Number="2042" Times="1"/>)"),
            kEngineData);
  Start();
  const RawClient client = Connect();
  OpenPair(client, "twice");
  ExpectError(Get(client, "N"), 1, "Get parameter(1,N) : Error = obj.N  Error : the ECU forgot its start");
  EXPECT_EQ(Hex(Get(client, "N")), Values(800));
}

TEST_F(ParameterTest, FilesOfOneSessionAreReadThroughTheirOwnNumbers) {
  WritePair("brakes",
            EcuFile("Name=\"BRAKES\"",
                    R"(<Request Name="R"><Sent Bytes="2101"/><Received MinBytes="3">
                         <DataItem Name="Pressure" Ref="1" FirstByte="3" Step="0.5"/></Received></Request>)",
                    R"(<Answer Request="2101" Response="610115"/>)"),
            {{"Pressure", "P"}});
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Select(client, "brakes.xml", "MAP"), 2U);
  EXPECT_EQ(Hex(client.Ask(GetRequest(2, "P"))), Values(10.5F));
  EXPECT_EQ(Hex(client.Ask(GetRequest(1, "N"))), Values(800));
  EXPECT_THAT(ErrorTextOf(client.Ask(GetRequest(1, "P"))), HasSubstr("obj.P  Error : "));
}

}  // namespace
}  // namespace korval::tests
