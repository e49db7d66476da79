// SPDX-License-Identifier: MIT
// Extended get and set parameter: data types, special names, script variables, raw requests, DTCs, CAN
// frames.
#include <algorithm>

#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class ExtendedParameterTest : public ServerBench {
 protected:
  static std::string Get(const RawClient& client, const std::string& name) {
    return Hex(client.Ask(ExtendedGetRequest(1, name)));
  }
  static std::string Set(const RawClient& client, const std::string& name, const std::string& value) {
    return Hex(client.Ask(ExtendedSetRequest(1, name, value)));
  }
  static std::string Number(float value) {
    return Hex(Reply(kExtendedGet, kSuccess, Word(0) + FourReals(value)));
  }
  static std::string Double(double value) {
    return Hex(Reply(kExtendedGet, kSuccess, Word(1) + FourReals8(value)));
  }
  static std::string String(const std::string& text) {
    return Hex(Reply(kExtendedGet, kSuccess, Word(2) + Text(text)));
  }
  static std::string Done() { return Hex(Reply(kExtendedSet, kSuccess)); }
  static std::string GetFailure(const std::string& name, unsigned number, const std::string& description) {
    return Hex(
        ErrorReply(kExtendedGet, number, "extended set parameter(1," + name + ") : Error = " + description));
  }
  static std::string SetFailure(const std::string& name, unsigned number, const std::string& description) {
    return Hex(ErrorReply(kExtendedSet, number,
                          "extended set parameter(1," + name + ",2,...) : Error = " + description));
  }
  void WriteEcuWithDtcs(const std::string& name, const std::string& simulation) const {
    WritePair(name, EcuFile("Name=\"FAULTY\" Protocol=\"DiagOnCAN\"", kEngineRequests, simulation),
              kEngineData);
  }
};

TEST_F(ExtendedParameterTest, TheReplyFollowsTheValuesType) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(
      Get(client, "EngineSpeed"),
      Hex(FromHex(
          "002A 0072 0000 0001 4089000000000000 4089000000000000 4089000000000000 0000000000000000 C238")));
  EXPECT_EQ(Get(client, "N"), Double(800));
  EXPECT_EQ(Get(client, "EngineState"), Number(2));
  EXPECT_EQ(Get(client, "FuelCut"), Number(-1));
  EXPECT_EQ(Get(client, "SoftwareName"), String("KV1.2"));
  EXPECT_EQ(Get(client, "NumericText"), String("12.5"));
}

TEST_F(ExtendedParameterTest, AMissingValueIsSuccessWithoutData) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Get(client, "BeyondAnswer"), Hex(Reply(kExtendedGet, kSuccess)));
}

TEST_F(ExtendedParameterTest, ValuesAreWrittenInEveryDataType) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(client.Ask(Request(kExtendedSet, Word(1) + Text("IdleSpeed") + Word(0) + Real(810)))),
            Done());
  EXPECT_EQ(Get(client, "IdleSpeed"), Double(810));
  EXPECT_EQ(Hex(client.Ask(Request(kExtendedSet, Word(1) + Text("IdleSpeed") + Word(1) + Real8(820)))),
            Done());
  EXPECT_EQ(Get(client, "IdleSpeed"), Double(820));
  EXPECT_EQ(Set(client, "IdleSpeed", "830"), Done());
  EXPECT_EQ(Get(client, "IdleSpeed"), Double(830));
}

TEST_F(ExtendedParameterTest, EveryMissingFieldOfSetIsNamed) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  struct Row {
    std::string fields;
    unsigned number;
    std::string text;
  };
  const std::string name = Word(1) + Text("N");
  const std::vector<Row> rows = {
      {"", 11003, "'lun' parameter, word expected"},
      {Word(1), 11002, "'name' parameter, string expected"},
      {Word(1) + FromHex("0009 4E4E"), 11002, "'name' parameter, string expected"},
      {name, 11003, "'datatype' parameter, word expected"},
      {name + Word(0), 11004, "'value' parameter, real expected"},
      {name + Word(0) + Word(0), 11004, "'value' parameter, real expected"},
      {name + Word(1), 11005, "'value' parameter, real8 expected"},
      {name + Word(1) + Real(1), 11005, "'value' parameter, real8 expected"},
      {name + Word(2), 11002, "'value' parameter, string expected"},
      {name + Word(2) + FromHex("0003 4E4E"), 11002, "'value' parameter, string expected"},
  };
  for (const auto& [fields, number, text] : rows)
    EXPECT_EQ(Hex(client.Ask(Request(kExtendedSet, fields))),
              Hex(ErrorReply(kExtendedSet, number,
                             "extended set parameter(lun,name,datatype,v) : Invalid " + text)))
        << Hex(fields);
}

TEST_F(ExtendedParameterTest, EveryMissingFieldOfGetIsNamedInTheWordsOfSet) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(client.Ask(Request(kExtendedGet))),
            Hex(ErrorReply(
                kExtendedGet, 11003,
                "extended set parameter(lun,name,datatype,v) : Invalid 'lun' parameter, word expected")));
  EXPECT_EQ(Hex(client.Ask(Request(kExtendedGet, Word(1) + Word(2)))),
            Hex(ErrorReply(
                kExtendedGet, 11002,
                "extended set parameter(lun,name,datatype,v) : Invalid 'name' parameter, string expected")));
}

TEST_F(ExtendedParameterTest, AnUnknownFileIs12000) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(client.Ask(ExtendedGetRequest(9, "N"))),
            Hex(ErrorReply(kExtendedGet, 12000, "extended get parameter(9,N) : Error unknown Emulator LUN")));
  EXPECT_EQ(
      Hex(client.Ask(ExtendedSetRequest(9, "N", "1"))),
      Hex(ErrorReply(kExtendedSet, 12000, "extended set parameter(9,N,2,...) : Error unknown Emulator LUN")));
  EXPECT_EQ(
      Hex(client.Ask(Request(kExtendedSet, Word(9) + Text("N") + Word(3)))),
      Hex(ErrorReply(kExtendedSet, 12000, "extended set parameter(9,N,3,...) : Error unknown Emulator LUN")));
}

TEST_F(ExtendedParameterTest, AnUnknownDataTypeIs12001) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  for (const unsigned type : {3U, 65535U})
    EXPECT_EQ(
        Hex(client.Ask(Request(kExtendedSet, Word(1) + Text("N") + Word(type) + Real(1)))),
        Hex(ErrorReply(kExtendedSet, 12001,
                       "extended set parameter(1,N," + std::to_string(type) + ",...) : Unknown data type")));
}

TEST_F(ExtendedParameterTest, AFailedAccessByNameCarriesItsOwnNumber) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  ExpectError(client.Ask(ExtendedGetRequest(1, "Nobody")), 10012,
              "extended set parameter(1,Nobody) : Error = obj.Nobody  Error : ");
  ExpectError(client.Ask(ExtendedSetRequest(1, "Nobody", "1")), 10012,
              "extended set parameter(1,Nobody,2,...) : Error = obj.Nobody  Error : ");
  ExpectError(client.Ask(ExtendedSetRequest(1, "EngineSpeed", "1")), 10012,
              "extended set parameter(1,EngineSpeed,2,...) : Error = obj.EngineSpeed  Error : ");
  ExpectError(client.Ask(ExtendedSetRequest(1, "IdleSpeed", "fast")), 10012,
              "extended set parameter(1,IdleSpeed,2,...) : Error = obj.IdleSpeed  Error : ");
  ExpectError(
      client.Ask(ExtendedGetRequest(1, "SilentValue")), 10012,
      "extended set parameter(1,SilentValue) : Error = obj.SilentValue  Error : the ECU keeps silent");
}

TEST_F(ExtendedParameterTest, SpecialNamesOfOneDirectionAreOrdinaryInTheOther) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  for (const std::string name : {"xcanframe", "pcreboot", "pcshutdown", "KWPREQUEST", "Readdtc"})
    ExpectError(client.Ask(ExtendedGetRequest(1, name)), 10012,
                "extended set parameter(1," + name + ") : Error = obj." + name + "  Error : ");
  for (const std::string name : {"readdtc", "nextdtc", "dtccode", "dtcstatus", "PcReboot"})
    ExpectError(client.Ask(ExtendedSetRequest(1, name, "1")), 10012,
                "extended set parameter(1," + name + ",2,...) : Error = obj." + name + "  Error : ");
}

TEST_F(ExtendedParameterTest, SetsAndGetsAreTracedWithDebuggingOnly) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  client.Ask(Request(kExtendedSet, Word(1) + Text("IDLE") + Word(0) + Real(0.00001F)));
  EXPECT_EQ(server_->WaitFor("extended set parameter("), "extended set parameter(1,IDLE,0,1E-05)");
  client.Ask(Request(kExtendedSet, Word(1) + Text("IDLE") + Word(1) + Real8(850)));
  EXPECT_EQ(server_->WaitFor("extended set parameter(1,IDLE,1"), "extended set parameter(1,IDLE,1,850)");
  Set(client, "IDLE", "860");
  EXPECT_EQ(server_->WaitFor("extended set parameter(1,IDLE,2"), "extended set parameter(1,IDLE,2,860)");
  Get(client, "N");
  EXPECT_EQ(server_->WaitFor("extended get parameter("), "extended get parameter(1,N) ok");
  const std::string reply = client.Ask(ExtendedGetRequest(1, "Nobody"));
  EXPECT_EQ(server_->WaitFor("extended set parameter(1,Nobody)"), ErrorTextOf(reply));
}

TEST_F(ExtendedParameterTest, NothingIsTracedWithoutDebugging) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  server_->WaitFor(folder_.Path("korv/engine_ecu.xml"));
  Set(client, "IDLE", "860");
  Set(client, "Nobody", "1");
  Get(client, "N");
  Get(client, "readdtc");
  Set(client, "kwprequest", "2101");
  client.Ask(HarmlessRequest());
  EXPECT_THAT(server_->TraceUntil("switching"), ElementsAre("switching offline/online(7)"));
}

// Script variables

TEST_F(ExtendedParameterTest, ScriptVariablesCountAndNameWhatTheFunctionHas) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Get(client, "qornbrefdata"), Number(2));
  EXPECT_EQ(Get(client, "qorrefdata(1)"), String("SoftwareVersion"));
  EXPECT_EQ(Get(client, "qorrefdata( 2 )"), String("HardwareVersion"));
  EXPECT_EQ(Get(client, "qornbrequests"), Number(7));
  EXPECT_EQ(Get(client, "qorrequest(1)"), String("READ_ENGINE"));
  EXPECT_EQ(Get(client, "qorrequest(5]"), String("WRITE_IDLE"));
  EXPECT_EQ(Get(client, "qornbdata(READ_ENGINE)"), Number(3));
  EXPECT_EQ(Get(client, "qornbdata(WRITE_IDLE)"), Number(1));
  EXPECT_EQ(Get(client, "qornbparam(WRITE_IDLE)"), Number(1));
  EXPECT_EQ(Get(client, "qornbparam(READ_ENGINE)"), Number(0));
  EXPECT_EQ(Get(client, "qordata(READ_ENGINE;2)"), String("CoolantTemp"));
  EXPECT_EQ(Get(client, "qorparam(WRITE_IDLE;1)"), String("IdleSpeed"));
  EXPECT_EQ(Get(client, "qorunit(READ_ENGINE;EngineSpeed)"), String("rpm"));
  EXPECT_EQ(Get(client, "qorunit(READ_ENGINE;EngineState)"), String(""));
}

TEST_F(ExtendedParameterTest, ScriptVariablesReadValuesAndTextsOnceTheRequestRan) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  const std::string speed = "qorvalue(READ_ENGINE;EngineSpeed)";
  EXPECT_EQ(Get(client, speed), GetFailure(speed, 11001, "data not available or invalid"));
  const std::string text = "qortext(READ_ENGINE;EngineSpeed)";
  EXPECT_EQ(
      Get(client, text),
      GetFailure(text, 11001,
                 "EngineSpeed has no text yet: execute its request first, qorexecreq(READ_ENGINE); when "
                 "that was done, its answer does not hold the item"));
  EXPECT_EQ(Get(client, "qorexecreq(READ_ENGINE)"), Number(0));
  EXPECT_EQ(Get(client, speed), Double(800));
  EXPECT_EQ(Get(client, "qortext(READ_ENGINE;EngineSpeed)"), String("800"));
  EXPECT_EQ(Get(client, "qorvalue(READ_ENGINE;EngineState)"), Number(2));
  EXPECT_EQ(Get(client, "qortext(READ_ENGINE;EngineState)"), String("running"));
  EXPECT_EQ(Get(client, "qorexecreq(READ_SILENT)"), Number(2000));
  EXPECT_EQ(Get(client, "qorinit"), Number(0));
}

TEST_F(ExtendedParameterTest, ScriptVariablesWriteParametersThatTheRequestSends) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(client.Ask(Request(kExtendedSet,
                                   Word(1) + Text("qorvalue(WRITE_IDLE;IdleSpeed)") + Word(1) + Real8(900)))),
            Done());
  EXPECT_EQ(Get(client, "qorexecreq(WRITE_IDLE)"), Number(0));
  EXPECT_EQ(Get(client, "IdleSpeed"), Double(900));
  EXPECT_EQ(Set(client, "qortext(WRITE_IDLE;IdleSpeed)", "870"), Done());
  EXPECT_EQ(Get(client, "qorvalue(WRITE_IDLE;IdleSpeed)"), Double(870));
  EXPECT_EQ(Get(client, "qorexecreq(WRITE_IDLE)"), Number(0));
  EXPECT_EQ(Get(client, "IdleSpeed"), Double(870));
  const std::string speed = "qorvalue(READ_ENGINE;EngineSpeed)";
  EXPECT_EQ(Set(client, speed, "1"), SetFailure(speed, 11001, "data EngineSpeed is readonly"));
  EXPECT_EQ(Set(client, "qorvalue(WRITE_IDLE;IdleSpeed)", "fast"),
            SetFailure("qorvalue(WRITE_IDLE;IdleSpeed)", 11001, "data not available or invalid"));
}

TEST_F(ExtendedParameterTest, ADataTypeOfRealGoesToTheOrdinaryWrite) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  for (const std::string name : {"qorvalue(WRITE_IDLE;IdleSpeed)", "pcreboot", "kwprequest", "xcanframe"})
    ExpectError(client.Ask(Request(kExtendedSet, Word(1) + Text(name) + Word(0) + Real(1))), 10012,
                "extended set parameter(1," + name + ",0,...) : Error = obj." + name + "  Error : ");
}

struct ScriptFailure {
  std::string name;
  std::string description;
};

TEST_F(ExtendedParameterTest, WrongScriptVariablesAre11001WithTheirOwnTexts) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  const std::vector<ScriptFailure> rows = {
      {"qorrefdata(abc)", "Syntax error : Bad reference data number abc"},
      {"qorrefdata(3)", "Syntaxe error : Bad reference data number 3"},
      {"qorrequest(abc)", "Syntax error : Bad request number abc"},
      {"qorrequest()", "Syntax error : Bad request number "},
      {"qorrequest(99)", "Syntaxe error : Bad request number 99"},
      {"qorrequest(0)", "Syntaxe error : Bad request number 0"},
      {"qorrequest(-1)", "Syntaxe error : Bad request number -1"},
      {"qorrequest(99999999999)", "Syntax error : Bad request number 99999999999"},
      {"qornbdata(NOPE)", "Syntax error : Bad request name NOPE"},
      {"qornbdata(read_engine)", "Syntax error : Bad request name read_engine"},
      {"qornbparam(NOPE)", "Syntax error : Bad request name NOPE"},
      {"qordata(READ_ENGINE)", "Syntax error : Bad number of parameters (2 needed) READ_ENGINE"},
      {"qordata(READ_ENGINE;1;2)", "Syntax error : Bad number of parameters (2 needed) READ_ENGINE;1;2"},
      {"qordata(NOPE;1)", "Syntax error : Bad request name NOPE"},
      {"qordata(READ_ENGINE;x)", "Syntax error : Bad data number "},
      {"qordata(READ_ENGINE;4)", "Syntaxe error : Bad data number 4"},
      {"qorparam(WRITE_IDLE;x)", "Syntax error : Bad parameter number "},
      {"qorparam(WRITE_IDLE;2)", "Syntax error : Bad parameter number 2"},
      {"qortext(READ_ENGINE;NOPE)", "Syntax error : Bad data name NOPE"},
      {"qorvalue(READ_ENGINE;enginespeed)", "Syntax error : Bad data name enginespeed"},
      {"qorunit(NOPE;EngineSpeed)", "Syntax error : Bad request name NOPE"},
      {"qorexecreq(NOPE)", "Syntax error : Bad request name NOPE"},
  };
  for (const auto& [name, description] : rows)
    EXPECT_EQ(Get(client, name), GetFailure(name, 11001, description));
}

TEST_F(ExtendedParameterTest, NamesThatOnlyLookLikeScriptVariablesAreOrdinary) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  for (const std::string name : {"QORNBREQUESTS", "qornbrequests2", "qor", "Qorrequest(1)", "qorinit()"})
    ExpectError(client.Ask(ExtendedGetRequest(1, name)), 10012,
                "extended set parameter(1," + name + ") : Error = obj." + name + "  Error : ");
}

TEST_F(ExtendedParameterTest, ExecutingAndInitialisingAnswerTheErrorNumber) {
  WritePair("shy",
            EcuFile("Name=\"SHY\" Protocol=\"DiagOnCAN\"", kEngineRequests,
                    kEngineAnswers + R"(<Fault Init="1" Number="1015" Times="1"/>
                                        <Fault Request="READ_ENGINE" Number="2044" Times="1"/>)"),
            kEngineData);
  Start();
  const RawClient client = Connect();
  OpenPair(client, "shy");
  EXPECT_EQ(Get(client, "qorinit"), Number(1015));
  EXPECT_EQ(Get(client, "qorinit"), Number(0));
  EXPECT_EQ(Get(client, "qorexecreq(READ_ENGINE)"), Number(2044));
  EXPECT_EQ(Get(client, "qorexecreq(READ_ENGINE)"), Number(0));
}

// Raw requests

TEST_F(ExtendedParameterTest, ARawRequestKeepsTheAnswerForALaterGet) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Get(client, "kwprequest"),
            GetFailure("kwprequest", 1, "Unable to get value, Set parameter before to get value"));
  EXPECT_EQ(Set(client, "kwprequest", "2102"), Done());
  EXPECT_EQ(Get(client, "kwprequest"), String("610201"));
  EXPECT_EQ(Get(client, "kwprequest"), String("610201"));
}

TEST_F(ExtendedParameterTest, ANegativeAnswerToARawRequestIsAnAnswer) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Set(client, "kwprequest", "2199"), Done());
  EXPECT_EQ(Get(client, "kwprequest"), String("7F2131"));
  EXPECT_EQ(Set(client, "kwprequest", "aa"), Done());
  EXPECT_EQ(Get(client, "kwprequest"), String("7FAA11"));
}

TEST_F(ExtendedParameterTest, ARawRequestThatFailsLeavesNoAnswer) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  const std::string nothing =
      GetFailure("kwprequest", 1, "Unable to get value, Set parameter before to get value");
  EXPECT_EQ(Set(client, "kwprequest", "2102"), Done());
  EXPECT_EQ(Set(client, "kwprequest", "1A8"), SetFailure("kwprequest", 1, "Invalid request"));
  EXPECT_EQ(Get(client, "kwprequest"), nothing);
  EXPECT_EQ(Set(client, "kwprequest", "2102"), Done());
  EXPECT_EQ(Set(client, "kwprequest", "ZZ"), SetFailure("kwprequest", 1, "Invalid request"));
  EXPECT_EQ(Get(client, "kwprequest"), nothing);
  EXPECT_EQ(Set(client, "kwprequest", "2102"), Done());
  ExpectError(client.Ask(ExtendedSetRequest(1, "kwprequest", "21EE")), 2000,
              "extended set parameter(1,kwprequest,2,...) : Error = the ECU keeps silent");
  EXPECT_EQ(Get(client, "kwprequest"), nothing);
}

TEST_F(ExtendedParameterTest, RawRequestsAreTracedOnSuccess) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  Set(client, "kwprequest", "21EE");
  Set(client, "kwprequest", "2102");
  EXPECT_EQ(server_->WaitFor("kwprequest ok"), "kwprequest ok send:2102 receive:610201");
}

// DTCs

TEST_F(ExtendedParameterTest, DtcsAreReadAndWalked) {
  WriteEcuWithDtcs("two", R"(<Dtc Code="1234" Status="20"/><Dtc Code="F678" Status="A0"/>)");
  Start();
  const RawClient client = Connect();
  OpenPair(client, "two");
  const auto failure = [](const std::string& name, const std::string& text) {
    return GetFailure(name, 1, text);
  };
  for (const std::string name : {"dtccode", "dtcstatus", "nextdtc"})
    EXPECT_EQ(Get(client, name), failure(name, "Read DTC before to get value"));
  EXPECT_EQ(Get(client, "readdtc"), Number(2));
  EXPECT_EQ(Get(client, "dtccode"), Number(0x1234));
  EXPECT_EQ(Get(client, "dtcstatus"), Number(0x20));
  EXPECT_EQ(Get(client, "nextdtc"), Number(2));
  EXPECT_EQ(Get(client, "dtccode"), Number(0xF678));
  EXPECT_EQ(Get(client, "dtcstatus"), Number(0xA0));
  EXPECT_EQ(Get(client, "nextdtc"), Number(-1));
  for (const std::string name : {"dtccode", "dtcstatus", "nextdtc"})
    EXPECT_EQ(Get(client, name), failure(name, "All DTC already read"));
  EXPECT_EQ(Get(client, "readdtc"), Number(2));
  EXPECT_EQ(Get(client, "dtccode"), Number(0x1234));
}

TEST_F(ExtendedParameterTest, ClearedDtcsAreGone) {
  WriteEcuWithDtcs("two", R"(<Dtc Code="1234" Status="20"/><Dtc Code="5678" Status="A0"/>)");
  Start();
  const RawClient client = Connect();
  OpenPair(client, "two");
  EXPECT_EQ(Get(client, "readdtc"), Number(2));
  EXPECT_EQ(Set(client, "kwprequest", "14FF00"), Done());
  EXPECT_EQ(Get(client, "readdtc"), Number(0));
  EXPECT_EQ(Get(client, "dtccode"), GetFailure("dtccode", 1, "All DTC already read"));
  EXPECT_EQ(Get(client, "nextdtc"), GetFailure("nextdtc", 1, "All DTC already read"));
}

TEST_F(ExtendedParameterTest, MoreDtcsThanAnAnswerHoldsAreAskedForAgain) {
  WriteEcuWithDtcs(
      "five", R"(<Dtc Code="0001" Status="11"/><Dtc Code="0002" Status="12"/><Dtc Code="0003" Status="13"/>
                              <Dtc Code="0004" Status="14"/><Dtc Code="ABCD" Status="05"/>)");
  Start({"--debug"});
  const RawClient client = Connect();
  OpenPair(client, "five");
  EXPECT_EQ(Get(client, "readdtc"), Number(5));
  Lines lines = server_->TraceUntil("extended get parameter(1,readdtc) ok");
  lines.erase(lines.begin(), std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
                return line.starts_with("readdtc_get");
              }));
  EXPECT_THAT(
      lines, ElementsAre(
                 "readdtc_get ECU Initialisation done", "readdtc_get ok send:17FF00 receive:5705000111000212",
                 "   failure 1 = $0001 status = $11", "   failure 2 = $0002 status = $12",
                 "readdtc_get ok send:17FFFF receive:5705000313000414", "   failure 3 = $0003 status = $13",
                 "   failure 4 = $0004 status = $14", "readdtc_get ok send:17FFFF receive:5705ABCD05",
                 "   failure 5 = $ABCD status = $05", "extended get parameter(1,readdtc) ok"));
  for (const int code : {1, 2, 3, 4, 0xABCD}) {
    EXPECT_EQ(Get(client, "dtccode"), Number(static_cast<float>(code)));
    Get(client, "nextdtc");
  }
}

TEST_F(ExtendedParameterTest, DtcAnswersThatAreTooShortAre2002) {
  const std::string too_short = "service 17 must answer at least 2 bytes";
  WriteEcuWithDtcs("one_byte", R"(<Answer Request="17FF00" Response="57"/>)");
  WriteEcuWithDtcs("cut", R"(<Answer Request="17FF00" Response="57021234"/>)");
  WriteEcuWithDtcs(
      "barren",
      R"(<Answer Request="17FF00" Response="5702123420"/><Answer Request="17FFFF" Response="5702"/>)");
  Start();
  const RawClient client = Connect();
  OpenPair(client, "one_byte");
  EXPECT_EQ(Get(client, "readdtc"), GetFailure("readdtc", 2002, too_short));
  Succeed(client, Request(kExit));
  OpenPair(client, "cut");
  ExpectError(client.Ask(ExtendedGetRequest(1, "readdtc")), 2002,
              "extended set parameter(1,readdtc) : Error = ");
  Succeed(client, Request(kExit));
  OpenPair(client, "barren");
  ExpectError(client.Ask(ExtendedGetRequest(1, "readdtc")), 2002,
              "extended set parameter(1,readdtc) : Error = ");
  EXPECT_EQ(Get(client, "dtccode"), Number(0x1234));
  EXPECT_EQ(Get(client, "nextdtc"), Number(2));
  EXPECT_EQ(Get(client, "dtccode"), Number(0));
}

TEST_F(ExtendedParameterTest, DtcsThatCannotBeReadAreReportedAndTraced) {
  WriteEcuWithDtcs("silent", R"(<Answer Request="17FF00" Response=""/>)");
  WriteEcuWithDtcs("dead", R"(<Fault Init="1" Number="1015" Times="1"/>)");
  WriteEcuWithDtcs("unwilling", R"(<Answer Request="17FF00" Response="7F1722"/>)");
  Start({"--debug"});
  const RawClient client = Connect();
  OpenPair(client, "silent");
  ExpectError(client.Ask(ExtendedGetRequest(1, "readdtc")), 2000,
              "extended set parameter(1,readdtc) : Error = the ECU keeps silent");
  EXPECT_EQ(server_->WaitFor("readdtc_get Error send:"), "readdtc_get Error send:17FF00 receive:");
  server_->WaitFor("  Error(2000) the ECU keeps silent");
  Succeed(client, Request(kExit));
  OpenPair(client, "dead");
  ExpectError(client.Ask(ExtendedGetRequest(1, "readdtc")), 1015,
              "extended set parameter(1,readdtc) : Error = the bus is dead");
  server_->WaitFor("readdtc_get Error init(1015) the bus is dead");
  Succeed(client, Request(kExit));
  OpenPair(client, "unwilling");
  ExpectError(client.Ask(ExtendedGetRequest(1, "readdtc")), 2001,
              "extended set parameter(1,readdtc) : Error = ");
  EXPECT_EQ(server_->WaitFor("readdtc_get Error send:"), "readdtc_get Error send:17FF00 receive:7F1722");
}

// CAN frames

TEST_F(ExtendedParameterTest, CanFramesAreSentAsADocument) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Set(client, "xcanframe", "0000012301020304;000007DF"), Done());
  EXPECT_EQ(server_->WaitFor("Frame = "), "Frame = 0000012301020304");
  EXPECT_EQ(server_->WaitFor("Frame = "), "Frame = 000007DF");
  EXPECT_THAT(server_->WaitFor("<can>"),
              AllOf(StartsWith("<can><x i=\"0\"><i>291</i><s><d>01020304</d></s><i>2015</i><s><d"),
                    ::testing::EndsWith("</s></x></can>")));
  server_->WaitFor("<can>");
}

TEST_F(ExtendedParameterTest, CanIdentifiersAreParsedAsTheHostDoes) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Set(client, "xcanframe", "FFFFFFFFab"), Done());
  EXPECT_THAT(server_->WaitFor("<can>"), HasSubstr("<i>-1</i><s><d>ab</d></s>"));
  server_->WaitFor("<can>");
  EXPECT_EQ(Set(client, "xcanframe", "12zzzzzz01"), Done());
  EXPECT_THAT(server_->WaitFor("<can>"), HasSubstr("<i>18</i><s><d>01</d></s>"));
  server_->WaitFor("<can>");
  EXPECT_EQ(Set(client, "xcanframe", "zzzzzzzz01"), Done());
  EXPECT_THAT(server_->WaitFor("<can>"), HasSubstr("<i>0</i><s><d>01</d></s>"));
}

TEST_F(ExtendedParameterTest, NoFrameTextsSendAnEmptyDocument) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Set(client, "xcanframe", ""), Done());
  EXPECT_THAT(server_->WaitFor("<can>"), StartsWith("<can><x i=\"0\""));
}

TEST_F(ExtendedParameterTest, MalformedCanFramesAre11001AndSendNothing) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  for (const std::string value :
       {"0000012", "000001230", ";", "00000123;", "00000123;;00000124", "0000012301;0000012"})
    EXPECT_EQ(Set(client, "xcanframe", value),
              Hex(ErrorReply(kExtendedSet, 11001,
                             "extended set parameter(1,xcanframe,2," + value +
                                 ") : Invalid can frame syntax (ex : iiiiiiiidd)")));
  client.Ask(HarmlessRequest());
  EXPECT_THAT(server_->TraceUntil("switching"), ::testing::Not(Contains(StartsWith("<can>"))));
}

TEST_F(ExtendedParameterTest, CanDataThatAreNoHexDigitsAreRefusedByTheLink) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  ExpectError(client.Ask(ExtendedSetRequest(1, "xcanframe", "00000123zz")), 2012,
              "extended set parameter(1,xcanframe,2,...) : Error = ");
}

}  // namespace
}  // namespace korval::tests
