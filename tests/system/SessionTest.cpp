// SPDX-License-Identifier: MIT
// Whole sessions: each reply byte for byte, and all that the server traces.
#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAreArray;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Matcher;
using ::testing::StartsWith;

using LineMatchers = std::vector<Matcher<std::string>>;

class SessionTest : public ServerBench {
 protected:
  /// The lines of a client's arrival.
  LineMatchers Arrival(const RawClient& client) const {
    return {StartsWith("Init WinSock : requestID="),
            StartsWith("          > Name="),
            StartsWith("          > LocalHostName="),
            "          > LocalIP=127.0.0.1",
            "          > LocalPort=" + std::to_string(port_),
            StartsWith("          > RemoteHost="),
            "          > RemoteHostIP=127.0.0.1",
            "          > RemotePort=" + std::to_string(client.LocalPort()),
            StartsWith("          > State=")};
  }
  /// The lines of its disconnect.
  LineMatchers Departure() const {
    return {"close WinSock", StartsWith("Init WinSock : port="), StartsWith("          > LocalHostName="),
            "          > LocalIP=127.0.0.1", "          > LocalPort=" + std::to_string(port_)};
  }
  static LineMatchers Joined(const std::vector<LineMatchers>& parts) {
    LineMatchers all;
    for (const LineMatchers& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
  }
};

struct Exchange {
  std::string request;
  std::string reply;
};

const std::vector<Exchange>& WholeSession() {
  static const std::vector<Exchange> exchanges = {
      {"0006 0002 0008", "0008 0002 0000 000A"},
      {"0010 0014 0201 0005 42656E636800 1AF2",
       "002C 0014 0000 0201 001F 4B6F7276616C204173617033207365727665722056657273696F6E20322E3000 9685"},
      {"0020 0003 000A 656E67696E652E786D6C 000A 454E47494E455F4D4150 0010 52E0", "000A 0003 0000 0001 000E"},
      {"000E 000E 0001 0004 544D4F54 A3C2", "0018 000E 0000 42B40000 42B40000 42B40000 00000000 C842"},
      {"0012 000F 0001 0004 49444C45 44548000 5A03", "0008 000F 0000 0017"},
      {"0016 000C 0001 0064 0002 0001 4E00 0003 43555400 E5E2", "0008 000C 0000 0014"},
      {"0006 0013 0019", "0012 0013 0000 0002 44480000 BF800000 03EF"},
      {"0008 000D 0001 0016", "0008 000D 0000 0015"},
      {"0006 0032 0038", "0008 0032 0000 003A"},
  };
  return exchanges;
}

TEST_F(SessionTest, RepliesByteForByteAndTracesLineForLine) {
  Start();
  {
    RawClient client = Connect();
    for (const auto& [request, reply] : WholeSession())
      EXPECT_EQ(Hex(client.Ask(FromHex(request))), Hex(FromHex(reply))) << "to " << request;
    const LineMatchers arrival = Arrival(client);
    client.Close();
    EXPECT_THAT(
        TraceUntilListening(),
        ElementsAreArray(Joined({arrival,
                                 {"init()", "Create diagnosis object", "  Server = " + folder_.Path("server"),
                                  "identify(513,Bench)", "select file(engine.xml,ENGINE_MAP,16)",
                                  folder_.Path("korv/engine_ecu.xml") + " load in Korval session",
                                  "set parameter(1,IDLE,850)", "switching offline/online(1)", "exit()"},
                                 Departure()})));
  }
  StopInOrder();
  EXPECT_EQ(server_->StandardError(), "");
}

TEST_F(SessionTest, TracesEveryFrameAndStepWithDebugging) {
  Start({"--debug"});
  {
    RawClient client = Connect();
    for (const auto& [request, reply] : WholeSession())
      EXPECT_EQ(Hex(client.Ask(FromHex(request))), Hex(FromHex(reply))) << "to " << request;
    const LineMatchers arrival = Arrival(client);
    client.Close();
    EXPECT_THAT(
        TraceUntilListening(),
        ElementsAreArray(Joined(
            {arrival,
             {"Byte received : 000600020008",
              "init()",
              "Create diagnosis object",
              "  Server = " + folder_.Path("server"),
              "Byte send : 000800020000000A",
              "Byte received : 001000140201000542656E6368001AF2",
              "identify(513,Bench)",
              "Byte send : "
              "002C001400000201001F4B6F7276616C204173617033207365727665722056657273696F6E20322E30009685",
              "Byte received : 00200003000A656E67696E652E786D6C000A454E47494E455F4D4150001052E0",
              "select file(engine.xml,ENGINE_MAP,16)",
              folder_.Path("korv/engine_ecu.xml") + " load in Korval session",
              "Byte send : 000A000300000001000E",
              "Byte received : 000E000E00010004544D4F54A3C2",
              "get parameter(1,TMOT) ok   value = 90",
              "Byte send : 0018000E000042B4000042B4000042B4000000000000C842",
              "Byte received : 0012000F0001000449444C45445480005A03",
              "set parameter(1,IDLE,850)",
              "Byte send : 0008000F00000017",
              "Byte received : 0016000C00010064000200014E00000343555400E5E2",
              AllOf(StartsWith("set acq para(1,100,[N"), HasSubstr("CUT"), EndsWith("])")),
              "Byte send : 0008000C00000014",
              "Byte received : 000600130019",
              AllOf(StartsWith("Data : "), HasSubstr("800")),
              AllOf(StartsWith("Data : "), HasSubstr("True")),
              "Byte send : 001200130000000244480000BF80000003EF",
              "Byte received : 0008000D00010016",
              "switching offline/online(1)",
              "Byte send : 0008000D00000015",
              "Byte received : 000600320038",
              "exit()",
              "Byte send : 000800320000003A"},
             Departure()})));
  }
  StopInOrder();
}

TEST_F(SessionTest, StartsWithTheBannerAndTheListenLines) {
  std::vector<std::string> options = SafeOptions();
  options.insert(options.end(), {"--tcp-port", "0", "--diag-port", "SIM"});
  server_.emplace(options, folder_.Path("home"));
  const Lines lines = server_->TraceUntil("          > LocalPort=");
  EXPECT_EQ(lines.front(), "Korval Asap server V1.3.0.5");
  ASSERT_GE(lines.size(), 5U);
  EXPECT_THAT(Lines(lines.end() - 4, lines.end()),
              ElementsAreArray(
                  LineMatchers{StartsWith("Init WinSock : port="), StartsWith("          > LocalHostName="),
                               "          > LocalIP=127.0.0.1", StartsWith("          > LocalPort=")}));
}

TEST_F(SessionTest, SecondInitReusesTheSessionAndTracesNothingElse) {
  Start();
  RawClient client = Connect();
  Succeed(client, Request(kInit));
  server_->WaitFor("  Server = ");
  Succeed(client, Request(kInit));
  client.Close();
  EXPECT_THAT(TraceUntilListening(), ElementsAreArray(Joined({{"init()"}, Departure()})));
}

TEST_F(SessionTest, InitInAnOpenSessionGoesBackToInitAndKeepsFilesAndValues) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  Succeed(client, AcquisitionRequest(1, {"N"}));
  Succeed(client, Request(kInit));
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(1, "N"))), kNotProcessed);
  Succeed(client, Request(kIdentify, Word(0x0201) + Text("Bench")));
  EXPECT_EQ(Select(client, "engine.xml", "ENGINE_MAP"), 2U);
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(1, "N"))), kSuccess);
  EXPECT_EQ(Hex(client.Ask(Request(kGetOnlineValue))),
            Hex(Reply(kGetOnlineValue, kSuccess, Word(1) + Real(800))));
}

TEST_F(SessionTest, ExitForgetsFilesAndValues) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Select(client, "engine.xml", "ENGINE_MAP"), 2U);
  Succeed(client, AcquisitionRequest(2, {"N"}));
  Succeed(client, Request(kExit));
  EXPECT_EQ(StatusOf(client.Ask(Request(kIdentify, Word(0x0201) + Text("Bench")))), kNotProcessed);
  OpenEngine(client);
  EXPECT_EQ(Hex(client.Ask(Request(kGetOnlineValue))), Hex(Reply(kGetOnlineValue, kSuccess, Word(0))));
}

TEST_F(SessionTest, FilesAreNumberedInTheOrderOfTheirSelection) {
  Start();
  const RawClient client = Connect();
  Identify(client);
  EXPECT_EQ(Select(client, "engine.xml", "ENGINE_MAP"), 1U);
  EXPECT_EQ(Select(client, "engine.xml", "ENGINE_MAP"), 2U);
  EXPECT_EQ(Select(client, "engine.xml", "ENGINE_MAP"), 3U);
}

TEST_F(SessionTest, InitWithoutAnInterfaceFailsWithTheNumberAndTriesAgainNextTime) {
  Start({"--diag-port", ""});
  RawClient client = Connect();
  const std::string reply = client.Ask(Request(kInit));
  ExpectError(reply, 1001, "no interface is chosen");
  EXPECT_EQ(StatusOf(client.Ask(Request(kIdentify, Word(0x0201) + Text("Bench")))), kNotProcessed);
  EXPECT_EQ(Hex(client.Ask(Request(kInit))), Hex(reply));
  const LineMatchers failure = {
      "init()", "Create diagnosis object", "  Server = " + folder_.Path("server"),
      "Diagnosis Communication port = ", "Open Diagnostic Session error : " + ErrorTextOf(reply)};
  const LineMatchers arrival = Arrival(client);
  client.Close();
  EXPECT_THAT(
      TraceUntilListening(),
      ElementsAreArray(Joined(
          {arrival, failure, {"identify receive without init, not processed"}, failure, Departure()})));
}

TEST_F(SessionTest, InitOnAPortThatCannotBeOpenedNamesThePort) {
  Start({"--diag-port", "/dev/korval-no-such-line"});
  const RawClient client = Connect();
  const std::string reply = client.Ask(Request(kInit));
  EXPECT_EQ(StatusOf(reply), kError);
  EXPECT_EQ(ErrorNumberOf(reply), 1002U);
  EXPECT_NE(ErrorTextOf(reply), "");
  EXPECT_EQ(server_->WaitFor("Diagnosis Communication port = "),
            "Diagnosis Communication port = /dev/korval-no-such-line");
  EXPECT_EQ(server_->WaitFor("Open Diagnostic Session error : "),
            "Open Diagnostic Session error : " + ErrorTextOf(reply));
}

TEST_F(SessionTest, AnsiTextIsEchoedOnTheWireAndTracedAsUtf8) {
  Start();
  const RawClient client = Connect();
  Identify(client);
  Succeed(client, Request(kInit));
  Succeed(client, Request(kIdentify, Word(0x0102) + Text("Pr\xFC"
                                                         "fstand \x80")));
  EXPECT_EQ(server_->TraceUntil("identify(258").back(), "identify(258,Pr\u00FCfstand \u20AC)");
  EXPECT_EQ(Select(client, "engine.xml", "ENGINE_MAP"), 1U);
  EXPECT_EQ(Hex(client.Ask(GetRequest(9,
                                      "\xB0"
                                      "C"))),
            Hex(ErrorReply(kGetParameter, 1,
                           "get parameter(9,\xB0"
                           "C) : Error unknown Emulator LUN")));
}

}  // namespace
}  // namespace korval::tests
