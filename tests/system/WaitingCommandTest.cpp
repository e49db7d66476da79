// SPDX-License-Identifier: MIT
// What happens to the client or to the server while a command waits for the ECU.
#include <csignal>
#include <memory>
#include <ostream>

#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::Contains;
using ::testing::Not;

/// A command that waits: the requests that lead to it, then the command itself.
struct WaitingCommand {
  const char* name;
  std::vector<std::string> before;
  std::string request;
};

const WaitingCommand kGet = {"get", {}, GetRequest(1, "N")};

std::vector<WaitingCommand> WaitingCommands() {
  return {kGet,
          {"set", {}, SetRequest(1, "IDLE", 850)},
          {"select", {}, SelectRequest("slow_kwp.xml", "MAP")},
          {"online", {AcquisitionRequest(1, {"N", "CUT", "SW"})}, Request(kGetOnlineValue)},
          {"xget", {}, ExtendedGetRequest(1, "N")},
          {"xset", {}, ExtendedSetRequest(1, "IDLE", "850")},
          {"readdtc", {}, ExtendedGetRequest(1, "readdtc")},
          {"kwprequest", {}, ExtendedSetRequest(1, "kwprequest", "2101")},
          {"qorexecreq", {}, ExtendedGetRequest(1, "qorexecreq(READ_ENGINE)")}};
}

void PrintTo(const WaitingCommand& command, std::ostream* stream) { *stream << command.name; }

class SlowEcuTest : public ServerBench {
 protected:
  /// Starts a server whose ECUs answer after `latency_ms`.
  void StartSlow(int latency_ms) {
    WritePair("slow",
              EcuFile("Name=\"SLOW\" Protocol=\"DiagOnCAN\" P2Ms=\"60000\"", kEngineRequests, kEngineAnswers,
                      latency_ms),
              kEngineData);
    WritePair("slow_kwp",
              EcuFile("Name=\"SLOWKWP\" P2Ms=\"60000\"", kEngineRequests, kEngineAnswers, latency_ms),
              kEngineData);
    Start({"--debug"});
  }
  /// Leaves the command waiting.
  void Wait(const RawClient& client, const WaitingCommand& command) {
    OpenPair(client, "slow");
    for (const std::string& request : command.before) Succeed(client, request);
    client.Send(command.request);
    server_->WaitFor("Byte received : " + Hex(command.request));
  }
};

constexpr int kForever = 50000;

class WaitingCommandTest : public SlowEcuTest, public ::testing::WithParamInterface<WaitingCommand> {};

TEST_P(WaitingCommandTest, ADisconnectEndsTheWaitAndTheNextClientIsServed) {
  StartSlow(kForever);
  {
    const RawClient client = Connect();
    Wait(client, GetParam());
  }
  server_->WaitFor("close WinSock");
  EXPECT_EQ(server_->WaitForPort(), port_);
  const RawClient next = Connect();
  EXPECT_EQ(Hex(next.Ask(HarmlessRequest())), Hex(Reply(kSwitching, kSuccess)));
  EXPECT_EQ(StatusOf(next.Ask(GetRequest(1, "N"))), kNotProcessed);
  ExpectGoodSession(next);
  StopInOrder();
}

TEST_P(WaitingCommandTest, AReplacedClientsReplyGoesNowhere) {
  StartSlow(200);
  const RawClient first = Connect();
  Wait(first, GetParam());
  const RawClient second = Connect();
  EXPECT_TRUE(first.EndedByServer());
  EXPECT_EQ(Hex(second.Ask(HarmlessRequest())), Hex(Reply(kSwitching, kSuccess)));
  EXPECT_EQ(StatusOf(second.Ask(GetRequest(1, "TMOT"))), kSuccess);
  ExpectGoodSession(second);
  StopInOrder();
}

TEST_P(WaitingCommandTest, AStopEndsTheServerInOrder) {
  StartSlow(kForever);
  const RawClient client = Connect();
  Wait(client, GetParam());
  StopInOrder();
}

INSTANTIATE_TEST_SUITE_P(Commands, WaitingCommandTest, ::testing::ValuesIn(WaitingCommands()),
                         [](const auto& command) { return command.param.name; });

TEST_F(SlowEcuTest, AReplacementThatSendsNothingGetsNothingOfTheOldCommand) {
  StartSlow(200);
  const RawClient first = Connect();
  Wait(first, kGet);
  const RawClient second = Connect();
  EXPECT_THAT(server_->TraceUntil("The command in progress is dropped"), Not(Contains("close WinSock")));
  EXPECT_EQ(Hex(second.Ask(HarmlessRequest())), Hex(Reply(kSwitching, kSuccess)));
  EXPECT_THAT(server_->TraceUntil("switching"), Not(Contains(::testing::StartsWith("Byte send : "))));
}

TEST_F(SlowEcuTest, EachOfManyClientsThatReplaceOneAnotherIsServedAtOnce) {
  StartSlow(kForever);
  std::vector<std::unique_ptr<RawClient>> clients;
  clients.push_back(std::make_unique<RawClient>(port_));
  Wait(*clients.back(), kGet);
  for (int count = 0; count < 20; ++count) {
    clients.push_back(std::make_unique<RawClient>(port_));
    EXPECT_EQ(Hex(clients.back()->Ask(HarmlessRequest())), Hex(Reply(kSwitching, kSuccess)));
    clients.back()->Send(GetRequest(1, "N"));
    server_->WaitFor("Byte received : " + Hex(GetRequest(1, "N")));
  }
  StopInOrder();
}

TEST_F(SlowEcuTest, AReplacedClientsCommandEndsWithTheExchangeThatIsUnderWay) {
  StartSlow(300);
  const RawClient first = Connect();
  Wait(first, {"online", {AcquisitionRequest(1, {"N", "CUT", "SW"})}, Request(kGetOnlineValue)});
  const RawClient second = Connect();
  EXPECT_EQ(Hex(second.Ask(GetRequest(1, "TMOT"))), Hex(Reply(kGetParameter, kSuccess, FourReals(90))));
  EXPECT_THAT(server_->TraceUntil("get parameter(1,TMOT) ok"),
              Not(Contains(::testing::StartsWith("GetOnlineValue : Reinit"))));
}

TEST_F(SlowEcuTest, AnInterruptEndsTheServerInOrder) {
  StartSlow(kForever);
  const RawClient client = Connect();
  Wait(client, kGet);
  EXPECT_EQ(server_->Stop(SIGINT), 0) << server_->StandardError();
}

TEST_F(SlowEcuTest, BytesThatAreNoFrameDuringAWaitGetTheGlobalErrorToo) {
  StartSlow(200);
  const RawClient client = Connect();
  Wait(client, kGet);
  EXPECT_EQ(Hex(client.Ask("x")), Hex(kGlobalError));
  server_->WaitFor("get parameter(1,N) ok");
  client.Send(HarmlessRequest());
  server_->WaitFor("Error : Invalid asap frame (x");
  EXPECT_EQ(Hex(client.Ask(GetRequest(1, "TMOT"))), Hex(Reply(kGetParameter, kSuccess, FourReals(90))));
}

}  // namespace
}  // namespace korval::tests
