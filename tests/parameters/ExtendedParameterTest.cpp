// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "parameters/ExtendedParameter.h"
#include "tests/support/CommandBench.h"
#include "tests/support/ErrorRecord.h"

namespace korval::parameters {
namespace {

using base::Variant;
using protocol::CommandCode;
using protocol::PowerRequest;
using tests::Fields;

class ExtendedParameterTest : public testing::Test {
 protected:
  ExtendedParameterTest() { bench_.SelectEngine(); }

  tests::Reply Get(const std::string& name, std::int32_t lun = 1) {
    return bench_.Run(CommandCode::kExtendedGetParameter, Fields().Word(lun).String(name));
  }
  tests::Reply Set(const Fields& fields) { return bench_.Run(CommandCode::kExtendedSetParameter, fields); }
  tests::Reply SetReal(const std::string& name, float value) {
    return Set(Fields().Word(1).String(name).Word(0).Real(value));
  }
  tests::Reply SetReal8(const std::string& name, double value) {
    return Set(Fields().Word(1).String(name).Word(1).Real8(value));
  }
  tests::Reply SetText(const std::string& name, const std::string& value) {
    return Set(Fields().Word(1).String(name).Word(2).String(value));
  }
  static void ExpectError(const tests::Reply& reply, const std::string& record) {
    EXPECT_EQ(reply.status, 65535);
    EXPECT_EQ(tests::ErrorRecord(reply.data), record);
  }
  static void ExpectDone(const tests::Reply& reply) {
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.data.ToHex(), "");
  }

  tests::CommandBench bench_;
  std::map<std::string, Variant>& values_ = bench_.session->instance->values;
};

// --- set

TEST_F(ExtendedParameterTest, SetWritesTheTypeThatItCarries) {
  values_["X"] = 0;
  ExpectDone(SetReal("X", 12.5F));
  EXPECT_EQ(values_["X"], Variant(12.5F));
  ExpectDone(SetReal8("X", 0.1));
  EXPECT_EQ(values_["X"], Variant(0.1));
  ExpectDone(SetText("X", "on"));
  EXPECT_EQ(values_["X"], Variant("on"));
  EXPECT_EQ(bench_.TakeTrace(), "");
}

TEST_F(ExtendedParameterTest, SetIsTracedWhileDebugging) {
  values_["X"] = 0;
  bench_.console.SetDebugTrace(true);
  SetReal("X", 12.5F);
  SetReal8("X", 1E20);
  SetText("X", "on");
  EXPECT_EQ(bench_.TakeTrace(),
            "extended set parameter(1,X,0,12.5)\r\nextended set parameter(1,X,1,1E+20)\r\n"
            "extended set parameter(1,X,2,on)\r\n");
}

TEST_F(ExtendedParameterTest, FailedSetIsTracedWithTheCallThenTheError) {
  bench_.console.SetDebugTrace(true);
  const std::string error = ",...) : Error = obj.X  Error : unknown name X";
  ExpectError(SetReal("X", 1), "10012 extended set parameter(1,X,0" + error);
  ExpectError(SetReal8("X", 1), "10012 extended set parameter(1,X,1" + error);
  ExpectError(SetText("X", "v"), "10012 extended set parameter(1,X,2" + error);
  EXPECT_EQ(bench_.TakeTrace(),
            "extended set parameter(1,X,0,1)\r\nextended set parameter(1,X,0" + error +
                "\r\nextended set parameter(1,X,1,1)\r\nextended set parameter(1,X,1" + error +
                "\r\nextended set parameter(1,X,2,v)\r\nextended set parameter(1,X,2" + error + "\r\n");
}

TEST_F(ExtendedParameterTest, SetThatEndsEarlyNamesTheFieldWithItsNumber) {
  const std::string text = " extended set parameter(lun,name,datatype,v) : Invalid '";
  ExpectError(Set(Fields()), "11003" + text + "lun' parameter, word expected");
  ExpectError(Set(Fields().Word(1)), "11002" + text + "name' parameter, string expected");
  ExpectError(Set(Fields().Word(1).String("X")), "11003" + text + "datatype' parameter, word expected");
  ExpectError(Set(Fields().Word(1).String("X").Word(0)), "11004" + text + "value' parameter, real expected");
  ExpectError(Set(Fields().Word(1).String("X").Word(1).Real(1)),
              "11005" + text + "value' parameter, real8 expected");
  ExpectError(Set(Fields().Word(1).String("X").Word(2).Word(5)),
              "11002" + text + "value' parameter, string expected");
}

TEST_F(ExtendedParameterTest, SetOfAnUnknownLunIs12000BeforeTheDataTypeIsLookedAt) {
  ExpectError(Set(Fields().Word(9).String("X").Word(7)),
              "12000 extended set parameter(9,X,7,...) : Error unknown Emulator LUN");
}

TEST_F(ExtendedParameterTest, UnknownDataTypeIs12001) {
  ExpectError(Set(Fields().Word(1).String("X").Word(3)),
              "12001 extended set parameter(1,X,3,...) : Unknown data type");
  ExpectError(Set(Fields().Word(1).String("X").Word(65535)),
              "12001 extended set parameter(1,X,65535,...) : Unknown data type");
}

TEST_F(ExtendedParameterTest, ScriptVariablesAreWrittenAsReal8AndStringOnly) {
  const auto item = bench_.engine->AddRequest("WRITE")->AddParameter("Idle");
  ExpectDone(SetReal8("qorvalue(WRITE;Idle)", 850));
  EXPECT_EQ(item->value, Variant(850.0));
  ExpectDone(SetText("qorvalue(WRITE;Idle)", "860"));
  EXPECT_EQ(item->value, Variant("860"));
  const std::string name = "qorvalue(WRITE;Idle)";
  ExpectError(SetReal(name, 1), "10012 extended set parameter(1," + name + ",0,...) : Error = obj." + name +
                                    "  Error : unknown name " + name);
}

TEST_F(ExtendedParameterTest, FailedScriptVariableIsNotWrittenByName) {
  values_["qorvalue(X;Y)"] = 0;
  ExpectError(
      SetReal8("qorvalue(X;Y)", 1),
      "11001 extended set parameter(1,qorvalue(X;Y),1,...) : Error = Syntax error : Bad request name X");
  EXPECT_EQ(values_["qorvalue(X;Y)"], Variant(0));
}

TEST_F(ExtendedParameterTest, PowerRequestsAreStringsWhateverTheirValue) {
  ExpectDone(SetText("pcreboot", ""));
  EXPECT_EQ(bench_.power_request, PowerRequest::kReboot);
  ExpectDone(SetText("pcshutdown", "now"));
  EXPECT_EQ(bench_.power_request, PowerRequest::kShutdown);
}

TEST_F(ExtendedParameterTest, PowerRequestsOfAnotherTypeAreOrdinaryNames) {
  values_["pcshutdown"] = 0;
  ExpectDone(SetReal("pcshutdown", 1));
  ExpectDone(SetReal8("pcshutdown", 2));
  EXPECT_EQ(values_["pcshutdown"], Variant(2.0));
  EXPECT_EQ(SetText("PCSHUTDOWN", "").status, 65535);
  EXPECT_EQ(bench_.power_request, PowerRequest::kNone);
}

TEST_F(ExtendedParameterTest, NamesOfTheGetAreOrdinaryInTheSet) {
  for (const char* name : {"readdtc", "nextdtc", "dtccode", "dtcstatus"}) {
    values_[name] = 0;
    ExpectDone(SetText(name, "v"));
    EXPECT_EQ(values_[name], Variant("v")) << name;
  }
}

TEST_F(ExtendedParameterTest, RawRequestIsSentAndItsAnswerReadBack) {
  bench_.engine->on_send = [](const base::ByteBuffer&, base::ByteBuffer& answer) { answer = {0x5A, 0x80}; };
  ExpectDone(SetText("kwprequest", "1A80"));
  const auto reply = Get("kwprequest");
  EXPECT_EQ(reply.status, 0);
  EXPECT_EQ(reply.data.ToHex(), "0002000435413830");
}

TEST_F(ExtendedParameterTest, BadRawRequestLeavesNoAnswer) {
  ExpectError(SetText("kwprequest", "1A8"),
              "1 extended set parameter(1,kwprequest,2,...) : Error = Invalid request");
  ExpectError(Get("kwprequest"),
              "1 extended set parameter(1,kwprequest) : Error = Unable to get value, Set parameter before to "
              "get value");
}

// --- xcanframe

class CanFrameTest : public ExtendedParameterTest {
 protected:
  CanFrameTest() {
    bench_.session->on_send_frames = [this](std::span<const viator3::CanFrame> frames) {
      ++sends_;
      frames_ = frames.size();
    };
  }

  int sends_ = 0;
  std::size_t frames_ = 0;
};

TEST_F(CanFrameTest, FramesAreTracedAndSentInOneDocument) {
  bench_.console.SetDebugTrace(true);
  ExpectDone(SetText("xcanframe", "0000012301020304;000007DF"));
  EXPECT_EQ(sends_, 1);
  const std::string frames =
      "<x i=\"0\"><i>291</i><s><d>01020304</d></s><i>2015</i><s><d/></s></x></can>\r\n";
  EXPECT_EQ(bench_.TakeTrace(),
            "extended set parameter(1,xcanframe,2,0000012301020304;000007DF)\r\n"
            "Frame = 0000012301020304\r\nFrame = 000007DF\r\n<can>" +
                frames + "<can>" + frames);
  EXPECT_EQ(frames_, 2U);
}

TEST_F(CanFrameTest, NothingIsTracedOtherwise) {
  ExpectDone(SetText("xcanframe", "000007DF"));
  EXPECT_EQ(bench_.TakeTrace(), "");
}

TEST_F(CanFrameTest, EmptyValueSendsAnEmptyElement) {
  ExpectDone(SetText("xcanframe", ""));
  EXPECT_EQ(sends_, 1);
  EXPECT_EQ(frames_, 0U);
}

TEST_F(CanFrameTest, BadFrameIsRefusedWithTheWholeValueAndNothingIsSent) {
  for (const char* value :
       {"0000012", "000001230", "00000123;x;00000124", "00000123;", "00000123;;00000124"}) {
    ExpectError(SetText("xcanframe", value), std::string("11001 extended set parameter(1,xcanframe,2,") +
                                                 value + ") : Invalid can frame syntax (ex : iiiiiiiidd)");
  }
  EXPECT_EQ(sends_, 0);
}

TEST_F(CanFrameTest, FramesBeforeTheBadOneAreTraced) {
  bench_.console.SetDebugTrace(true);
  SetText("xcanframe", "00000123;x;00000124");
  EXPECT_EQ(bench_.TakeTrace(),
            "extended set parameter(1,xcanframe,2,00000123;x;00000124)\r\nFrame = 00000123\r\nFrame = x\r\n"
            "extended set parameter(1,xcanframe,2,00000123;x;00000124) : Invalid can frame syntax "
            "(ex : iiiiiiiidd)\r\n");
}

TEST_F(CanFrameTest, RefusalOfTheLinkKeepsItsNumberAndTheSecondTrace) {
  bench_.console.SetDebugTrace(true);
  bench_.session->on_send_frames = [](std::span<const viator3::CanFrame>) {
    throw base::Failure(2012, "no hex digits");
  };
  ExpectError(SetText("xcanframe", "00000001zz"),
              "2012 extended set parameter(1,xcanframe,2,...) : Error = no hex digits");
  const std::string document = "<can><x i=\"0\"><i>1</i><s><d>zz</d></s></x></can>\r\n";
  EXPECT_EQ(bench_.TakeTrace(), "extended set parameter(1,xcanframe,2,00000001zz)\r\nFrame = 00000001zz\r\n" +
                                    document + document +
                                    "extended set parameter(1,xcanframe,2,...) : Error = no hex digits\r\n");
}

TEST_F(CanFrameTest, OtherTypesAndTheGetAreOrdinary) {
  values_["xcanframe"] = 0;
  ExpectDone(SetReal("xcanframe", 1));
  ExpectDone(SetReal8("xcanframe", 1));
  EXPECT_EQ(Get("xcanframe").status, 0);
  EXPECT_EQ(sends_, 0);
}

// --- get

TEST_F(ExtendedParameterTest, GetAnswersByTheTypeOfTheValue) {
  const std::string single =
      "412000004120000041200000"
      "00000000";
  const std::vector<std::pair<Variant, std::string>> rows = {
      {std::int16_t{10}, "0000" + single},
      {std::int32_t{10}, "0000" + single},
      {10.0F, "0000" + single},
      {std::uint8_t{10}, "0000" + single},
      {true, "0000BF800000BF800000BF80000000000000"},
      {10.0,
       "0001402400000000000040240000000000004024000000000000"
       "0000000000000000"},
      {Variant("abc"), "0002000361626300"},
      {Variant(""), "00020000"},
  };
  for (const auto& [value, hex] : rows) {
    values_["X"] = value;
    const auto reply = Get("X");
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.data.ToHex(), hex) << value.ToText();
  }
}

TEST_F(ExtendedParameterTest, GetOfAnyOtherTypeAnswersNothing) {
  const std::vector<Variant> rows = {Variant(), Variant(base::Null{}), Variant(base::Date{1}),
                                     Variant(base::Currency{1}), Variant(base::Object{})};
  for (const Variant& value : rows) {
    values_["X"] = value;
    ExpectDone(Get("X"));
  }
}

TEST_F(ExtendedParameterTest, GetIsTracedWhileDebugging) {
  values_["X"] = 1;
  Get("X");
  EXPECT_EQ(bench_.TakeTrace(), "");
  bench_.console.SetDebugTrace(true);
  Get("X");
  EXPECT_EQ(bench_.TakeTrace(), "extended get parameter(1,X) ok\r\n");
}

TEST_F(ExtendedParameterTest, GetThatEndsEarlyAnswersWithTheSetsTexts) {
  const std::string text = " extended set parameter(lun,name,datatype,v) : Invalid '";
  ExpectError(bench_.Run(CommandCode::kExtendedGetParameter, Fields()),
              "11003" + text + "lun' parameter, word expected");
  ExpectError(bench_.Run(CommandCode::kExtendedGetParameter, Fields().Word(1)),
              "11002" + text + "name' parameter, string expected");
}

TEST_F(ExtendedParameterTest, GetOfAnUnknownLunIs12000) {
  ExpectError(Get("X", 5), "12000 extended get parameter(5,X) : Error unknown Emulator LUN");
}

TEST_F(ExtendedParameterTest, FailedGetSaysSetAndKeepsTheNumber) {
  bench_.console.SetDebugTrace(true);
  const std::string message = "extended set parameter(1,X) : Error = obj.X  Error : unknown name X";
  ExpectError(Get("X"), "10012 " + message);
  EXPECT_EQ(bench_.TakeTrace(), message + "\r\n");
}

TEST_F(ExtendedParameterTest, NamesOfTheSetAreOrdinaryInTheGet) {
  for (const char* name : {"pcreboot", "pcshutdown", "xcanframe"}) {
    values_[name] = "v";
    EXPECT_EQ(Get(name).data.ToHex(), "000200017600") << name;
  }
  EXPECT_EQ(bench_.power_request, PowerRequest::kNone);
}

TEST_F(ExtendedParameterTest, GetReadsScriptVariables) {
  EXPECT_EQ(Get("qornbrequests").data.ToHex(), "000000000000000000000000000000000000");
  ExpectError(
      Get("qorrequest(99)"),
      "11001 extended set parameter(1,qorrequest(99)) : Error = Syntaxe error : Bad request number 99");
  values_["QORNBREQUESTS"] = "plain";
  EXPECT_EQ(Get("QORNBREQUESTS").status, 0);
}

TEST_F(ExtendedParameterTest, DtcsAreReadAndWalked) {
  bench_.engine->on_send = [](const base::ByteBuffer&, base::ByteBuffer& answer) {
    answer = {0x57, 0x02, 0x12, 0x34, 0x20, 0x56, 0x78, 0xA0};
  };
  ExpectError(Get("dtccode"), "1 extended set parameter(1,dtccode) : Error = Read DTC before to get value");
  EXPECT_EQ(Get("readdtc").data.ToHex(), "000040000000400000004000000000000000");
  EXPECT_EQ(Get("dtccode").data.ToHex().substr(4, 8), "4591A000");    // 4660
  EXPECT_EQ(Get("dtcstatus").data.ToHex().substr(4, 8), "42000000");  // 32
  EXPECT_EQ(Get("nextdtc").data.ToHex().substr(4, 8), "40000000");    // 2
  EXPECT_EQ(Get("dtccode").data.ToHex().substr(4, 8), "46ACF000");    // 22136
  EXPECT_EQ(Get("nextdtc").data.ToHex().substr(4, 8), "BF800000");    // -1
  ExpectError(Get("nextdtc"), "1 extended set parameter(1,nextdtc) : Error = All DTC already read");
}

TEST_F(ExtendedParameterTest, LongNameIsCutSoThatTheReplyFitsIntoAFrame) {
  const std::string name(65000, 'x');
  const auto reply = Set(Fields().Word(9).String(name).Word(0));
  EXPECT_EQ(reply.status, 65535);
  EXPECT_LE(reply.data.Length() + 8, 65534U);
  EXPECT_EQ(reply.data.Word(0), 12000);
}

// --- waits

TEST_F(ExtendedParameterTest, ClientLeavingInsideAWaitEndsInAnErrorRecord) {
  bench_.engine->on_send = [this](const base::ByteBuffer&, base::ByteBuffer&) {
    const std::weak_ptr<tests::FakeSession> watched = bench_.session;
    bench_.session.reset();
    bench_.engine.reset();
    bench_.EndSession();
    EXPECT_FALSE(watched.expired());
    throw base::Failure(1000, "the session was closed");
  };
  ExpectError(SetText("kwprequest", "1A80"),
              "1000 extended set parameter(1,kwprequest,2,...) : Error = the session was closed");
  EXPECT_EQ(bench_.files.Count(), 0);
}

TEST_F(ExtendedParameterTest, ClientLeavingWhileDtcsAreReadEndsInAnErrorRecord) {
  bench_.engine->initialised = true;
  bench_.engine->on_send = [this](const base::ByteBuffer&, base::ByteBuffer&) {
    bench_.session.reset();
    bench_.engine.reset();
    bench_.EndSession();
    throw base::Failure(1000, "the session was closed");
  };
  ExpectError(Get("readdtc"), "1000 extended set parameter(1,readdtc) : Error = the session was closed");
}

TEST_F(ExtendedParameterTest, ClientLeavingInsideAScriptExecutionGetsItsNumber) {
  const auto request = bench_.engine->AddRequest("READ");
  request->on_execute = [this] {
    bench_.session.reset();
    bench_.engine.reset();
    bench_.EndSession();
    throw base::Failure(1000, "the session was closed");
  };
  EXPECT_EQ(Get("qorexecreq(READ)").data.ToHex().substr(4, 8), "447A0000");
}

}  // namespace
}  // namespace korval::parameters
