// SPDX-License-Identifier: MIT
// The same session over every kind of link: inside the server, on a K-line and on a CAN bus.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>

#include "tests/system/FreePort.h"
#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

using Options = std::vector<std::string>;

/// How the server reaches the ECU, and how the ECU is started when it is a process of its own.
struct Wire {
  std::string name;
  std::string port;  ///< of the server
  Options ecu;       ///< of the simulator; empty: there is none
};

const std::string kWireSimulation = kEngineAnswers + R"(
    <Signal Item="CoolantTemp" Wave="constant" Value="90"/>
    <Dtc Code="1234" Status="20"/><Dtc Code="F678" Status="A0"/><Dtc Code="0001" Status="60"/>)";

class WireSessionTest : public ServerBench {
 protected:
  WireSessionTest() {
    WritePair("wire",
              EcuFile(R"(Name="ENGINE" Ecu="Engine control" RequestId="7E0" ResponseId="7E8")",
                      kEngineRequests, kWireSimulation),
              kEngineData);
  }

  std::string BusInterface() const { return "tcp://127.0.0.1:" + bus_port_ + "/can0"; }
  Wire Simulation() const { return {"SIM", "SIM", {}}; }
  Wire KLine(const Options& more = {}) const {
    Wire wire{"K-line", folder_.Path("kline"), {"--kline", folder_.Path("kline")}};
    wire.ecu.insert(wire.ecu.end(), more.begin(), more.end());
    return wire;
  }
  Wire Can() const {
    const std::string bus = "virtualcan:" + BusInterface();
    return {"CAN", "CAN:" + bus, {"--can", bus}};
  }

  void StartEcu(const Wire& wire) {
    ecu_.reset();
    if (wire.ecu.empty()) return;
    Options options{"--ecu", folder_.Path("korv/wire_ecu.xml")};
    options.insert(options.end(), wire.ecu.begin(), wire.ecu.end());
    ecu_ = std::make_unique<ServerProcess>(options, folder_.Path("home"), KORVAL_ECU_SIM);
    ecu_->WaitFor("Engine control answers on");
  }
  void StartOn(const Wire& wire, const Options& more = {}) {
    StartEcu(wire);
    Options options{"--diag-port", wire.port};
    options.insert(options.end(), more.begin(), more.end());
    Start(options);
  }

  void StopOn(const Wire& wire) {
    StopInOrder();
    if (ecu_) {
      EXPECT_EQ(ecu_->Stop(SIGTERM), 0) << wire.name << ": " << ecu_->StandardError();
    }
  }

  /// What a whole session is answered with.
  std::vector<std::string> Session() const {
    const RawClient client = Connect();
    std::vector<std::string> answers;
    for (const std::string& request : Script()) answers.push_back(Hex(client.Ask(request)));
    return answers;
  }

  /// Everything that the server sent, as hexadecimal digits.
  std::string SentBytes() const {
    std::istringstream lines(BusTrace());
    std::string sent;
    for (std::string line; std::getline(lines, line);) {
      const std::size_t sender = line.find(" T ");
      if (sender != std::string::npos) sent += line.substr(sender + 3);
    }
    std::erase(sent, ' ');
    return sent;
  }
  static std::size_t CountOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
  }

  std::string BusTrace() const {
    std::ostringstream written;
    written << std::ifstream(folder_.Path("bus.log")).rdbuf();
    return written.str();
  }

  static std::vector<std::string> Script() {
    std::vector<std::string> script{Request(kInit),
                                    Request(kIdentify, Word(0x0201) + Text("Bench")),
                                    SelectRequest("wire.xml", "MAP"),
                                    GetRequest(1, "TMOT"),
                                    SetRequest(1, "IDLE", 850),
                                    GetRequest(1, "IDLE"),
                                    AcquisitionRequest(1, {"N", "TMOT", "CUT", "NUMTEXT"})};
    script.insert(script.end(), 3, Request(kGetOnlineValue));
    script.push_back(ExtendedSetRequest(1, "kwprequest", "2180"));
    for (const char* name :
         {"kwprequest", "readdtc", "dtccode", "dtcstatus", "nextdtc", "dtccode", "nextdtc", "dtccode",
          "nextdtc", "qorexecreq(READ_TEXTS)", "qorvalue(READ_TEXTS;SoftwareName)"}) {
      script.push_back(ExtendedGetRequest(1, name));
    }
    script.push_back(Request(kExit));
    return script;
  }

  std::string bus_port_ = std::to_string(FreePort());
  std::unique_ptr<ServerProcess> ecu_;
};

TEST_F(WireSessionTest, TheSameValuesComeOverEveryLink) {
  StartOn(Simulation());
  const std::vector<std::string> expected = Session();
  StopOn(Simulation());
  ASSERT_EQ(expected.at(3), Hex(Reply(kGetParameter, kSuccess, FourReals(90))));
  for (const Wire& wire : {KLine(), KLine({"--echo"}), Can()}) {
    StartOn(wire);
    EXPECT_EQ(Session(), expected) << wire.name;
    StopOn(wire);
  }
}

TEST_F(WireSessionTest, AnEcuThatLeavesAndReturnsGivesValuesAgain) {
  for (const Wire& wire : {KLine(), Can()}) {
    StartOn(wire);
    const RawClient client = Connect();
    OpenPair(client, "wire");
    Succeed(client, AcquisitionRequest(1, {"TMOT"}));
    const std::string with_ecu = Hex(client.Ask(Request(kGetOnlineValue)));
    EXPECT_EQ(with_ecu, Hex(Reply(kGetOnlineValue, kSuccess, Word(1) + Real(90)))) << wire.name;
    ecu_->Pause();
    client.Ask(Request(kGetOnlineValue));
    server_->WaitFor("GetOnlineValue : Reinit Ecu Engine control");
    ecu_->Resume();
    EXPECT_EQ(Hex(client.Ask(Request(kGetOnlineValue))), with_ecu) << wire.name;
    StopOn(wire);
  }
}

TEST_F(WireSessionTest, ACablePulledAndPutBackGivesValuesAgain) {
  StartOn(KLine());
  const RawClient client = Connect();
  OpenPair(client, "wire");
  Succeed(client, AcquisitionRequest(1, {"TMOT"}));
  for (int time = 0; time < 3; ++time) {
    const std::string with_cable = Hex(client.Ask(Request(kGetOnlineValue)));
    EXPECT_EQ(with_cable, Hex(Reply(kGetOnlineValue, kSuccess, Word(1) + Real(90))));
    EXPECT_EQ(ecu_->Stop(SIGTERM), 0);
    EXPECT_FALSE(std::filesystem::exists(KLine().port)) << "the device is gone";
    EXPECT_NE(Hex(client.Ask(Request(kGetOnlineValue))), with_cable);
    server_->WaitFor("GetOnlineValue : Reinit Ecu Engine control");
    StartEcu(KLine());
  }
  EXPECT_EQ(Hex(client.Ask(Request(kGetOnlineValue))),
            Hex(Reply(kGetOnlineValue, kSuccess, Word(1) + Real(90))));
  StopOn(KLine());
}

TEST_F(WireSessionTest, AClientThatLeavesWithoutExitAndComesBackAtOnceIsServed) {
  StartOn(KLine());
  for (int visit = 0; visit < 5; ++visit) {
    const RawClient client = Connect();
    const std::string init = client.AskUntilFree(Request(kInit));
    ASSERT_EQ(StatusOf(init), kSuccess) << visit << ": " << ErrorTextOf(init);
    OpenPair(client, "wire");
    Succeed(client, GetRequest(1, "TMOT"));
  }
  StopOn(KLine());
}

TEST_F(WireSessionTest, ADamagedAnswerCostsOneExchangeMoreAndNoValue) {
  WritePair("wire",
            EcuFile(R"(Name="ENGINE" Ecu="Engine control")", kEngineRequests,
                    kWireSimulation + R"(<Fault Request="READ_ENGINE" Wire="damaged"/>)"),
            kEngineData);
  StartOn(KLine(), {"--bus-trace", folder_.Path("bus.log")});
  const RawClient client = Connect();
  OpenPair(client, "wire");
  Succeed(client, GetRequest(1, "TMOT"));
  Succeed(client, GetRequest(1, "TMOT"));
  StopOn(KLine());
  EXPECT_EQ(CountOf(SentBytes(), "8110F18103"), 1U) << SentBytes();
  EXPECT_EQ(CountOf(SentBytes(), "8210F12101A5"), 3U) << SentBytes();
}

TEST_F(WireSessionTest, EcusThatAreTalkedToInTheirOwnWayGiveTheSameValues) {
  for (const std::string function :
       {R"(Functional="1")", R"(Header="format-length")", R"(Init="none" Header="addresses-length")",
        R"(WakeUp="byte" Rts="off")", R"(Session="85" SessionBaud="03")"}) {
    WritePair("wire",
              EcuFile(R"(Name="ENGINE" Ecu="Engine control" )" + function, kEngineRequests, kWireSimulation),
              kEngineData);
    StartOn(KLine({"--echo"}));
    const RawClient client = Connect();
    OpenPair(client, "wire");
    EXPECT_EQ(Hex(client.Ask(GetRequest(1, "TMOT"))), Hex(Reply(kGetParameter, kSuccess, FourReals(90))))
        << function;
    StopOn(KLine());
  }
}

TEST_F(WireSessionTest, AFrameDuringAKLineExchangeIsAnsweredAtOnce) {
  WritePair(
      "wire",
      EcuFile(R"(Name="ENGINE" Ecu="Engine control" P2Ms="60000")", kEngineRequests, kWireSimulation, 50000),
      kEngineData);
  StartOn(KLine(), {"--bus-trace", folder_.Path("bus.log")});
  const RawClient client = Connect();
  Identify(client);
  client.Send(SelectRequest("wire.xml", "MAP"));
  // The answer to startCommunication ends with C3; the request behind it is the one that waits.
  WaitUntil([this] {
    const std::string trace = BusTrace();
    const std::size_t started = trace.find(" C3\n");
    return started != std::string::npos && trace.find(" T ", started) != std::string::npos;
  });
  EXPECT_EQ(Hex(client.Ask(HarmlessRequest())), Hex(kGlobalError));
  const RawClient successor = Connect();
  EXPECT_EQ(StatusOf(successor.Ask(HarmlessRequest())), kSuccess);
  const std::string trace = BusTrace();
  EXPECT_EQ(trace.find(" R ", trace.rfind(" T ")), std::string::npos) << "the ECU has answered: " << trace;
  StopOn(KLine());
}

TEST_F(WireSessionTest, AForeignToolSeesTheFramesOnTheBus) {
  StartOn(Can());
  ServerProcess listener({"-l", "virtualcan", BusInterface()}, folder_.Path("home"), KORVAL_CANBUSUTIL);
  while (listener.StandardError().find("socket connected") == std::string::npos) std::this_thread::yield();
  const RawClient client = Connect();
  OpenPair(client, "wire");
  Succeed(client, GetRequest(1, "TMOT"));
  EXPECT_EQ(listener.WaitFor("     7E0   [8]  02 21 01"), "     7E0   [8]  02 21 01 55 55 55 55 55");
  EXPECT_EQ(listener.WaitFor("     7E8   [8]  06 61 01"), "     7E8   [8]  06 61 01 0C 80 82 02 55");
  listener.Stop(SIGTERM);
  StopOn(Can());
}

TEST_F(WireSessionTest, TheBusTraceHoldsBothDirections) {
  StartOn(Can(), {"--bus-trace", folder_.Path("bus.log")});
  const RawClient client = Connect();
  OpenPair(client, "wire");
  Succeed(client, GetRequest(1, "TMOT"));
  StopOn(Can());
  EXPECT_THAT(BusTrace(),
              AllOf(HasSubstr("can0 7E0#0221015555555555 T\n"), HasSubstr("can0 7E8#0661010C80820255 R\n")));
}

}  // namespace
}  // namespace korval::tests
