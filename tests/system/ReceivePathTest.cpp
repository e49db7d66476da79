// SPDX-License-Identifier: MIT
// What the server does with bytes, arrivals and clients as they come.
#include <memory>

#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;

constexpr std::string_view kInvalidFrame = "Error : Invalid asap frame (";
constexpr std::string_view kWrongChecksum = "erreur de checksum ";

class ReceivePathTest : public ServerBench {};

TEST_F(ReceivePathTest, AFrameSplitOverTwoArrivalsIsRefusedTwice) {
  Start();
  const RawClient client = Connect();
  const std::string request = GetRequest(1, "N");
  client.Send(request.substr(0, 5));
  server_->WaitFor(kInvalidFrame);
  client.Send(request.substr(5));
  server_->WaitFor(kInvalidFrame);
  EXPECT_EQ(Hex(client.Ask(HarmlessRequest())), Hex(Reply(kSwitching, kSuccess)));
}

TEST_F(ReceivePathTest, TheRefusedBytesAreShownAsCharacters) {
  Start();
  const RawClient client = Connect();
  client.Send("Hello");
  EXPECT_EQ(server_->WaitFor(kInvalidFrame), "Error : Invalid asap frame (Hello)");
  client.Send(
      "Gr\xFC\xDF"
      "e");
  EXPECT_EQ(server_->WaitFor(kInvalidFrame), "Error : Invalid asap frame (Gr\u00FC\u00DFe)");
}

TEST_F(ReceivePathTest, OfTwoFramesInOneArrivalOnlyTheFirstIsProcessed) {
  Start({"--debug"});
  const RawClient client = Connect();
  const std::string both = HarmlessRequest() + Request(kInit);
  server_->Pause();
  client.SendToStoppedServer(both);
  server_->Resume();
  EXPECT_EQ(Hex(client.Receive()), Hex(Reply(kSwitching, kSuccess)));
  EXPECT_EQ(server_->WaitFor("Byte received : "), "Byte received : " + Hex(both));
  EXPECT_EQ(Hex(client.Ask(Request(kIdentify))), Hex(Reply(kIdentify, kNotProcessed)));
}

TEST_F(ReceivePathTest, AWrongChecksumIsNotAnswered) {
  Start();
  const RawClient client = Connect();
  ExpectSilence(client, FromHex("0006 0002 0009"), kWrongChecksum);
  ExpectSilence(client, FromHex("0008 000D 0007 001D"), kWrongChecksum);
}

TEST_F(ReceivePathTest, LengthsThatAreTooShortOrOddAreInvalid) {
  Start();
  const RawClient client = Connect();
  for (const char* const bytes :
       {"00", "0000", "0000 0000", "0001", "0002 0002", "0004 0002", "0004 0004 0008", "0005 0002 07", "0006",
        "0006 0002 00", "0007 0002 0009 00", "FFFF 0002 0001"}) {
    SCOPED_TRACE(bytes);
    ExpectSilence(client, FromHex(bytes), "Error : Invalid asap frame");
  }
}

TEST_F(ReceivePathTest, ALengthBeyondTheArrivalIsInvalid) {
  Start();
  const RawClient client = Connect();
  ExpectSilence(client, FromHex("0008 0002 000A"), kInvalidFrame);
  ExpectSilence(client, FromHex("FFFE 0002 0000"), kInvalidFrame);
}

TEST_F(ReceivePathTest, RefusalsAndDumpsWithDebugging) {
  Start({"--debug"});
  RawClient client = Connect();
  client.Ask(HarmlessRequest());
  server_->WaitFor("Byte send : ");
  client.Send(FromHex("0006 0002 0009"));
  server_->WaitFor(kWrongChecksum);
  client.Send("Hello");
  EXPECT_THAT(server_->TraceUntil(kInvalidFrame), Not(Contains(StartsWith("Byte received"))));
}

TEST_F(ReceivePathTest, ADisconnectResetsAsExitDoesAndThePortIsKept) {
  Start();
  {
    const RawClient client = Connect();
    OpenEngine(client);
    Succeed(client, AcquisitionRequest(1, {"N"}));
  }
  server_->WaitFor("close WinSock");
  EXPECT_EQ(server_->WaitForPort(), port_);
  const RawClient client = Connect();
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(1, "N"))), kNotProcessed);
  EXPECT_EQ(StatusOf(client.Ask(Request(kIdentify, Word(0x0201) + Text("Bench")))), kNotProcessed);
  OpenEngine(client);
  EXPECT_EQ(Hex(client.Ask(Request(kGetOnlineValue))), Hex(Reply(kGetOnlineValue, kSuccess, Word(0))));
}

TEST_F(ReceivePathTest, ADisconnectWithAResetIsADisconnect) {
  Start();
  RawClient client = Connect();
  OpenEngine(client);
  client.Abort();
  server_->WaitFor("close WinSock");
  EXPECT_EQ(server_->WaitForPort(), port_);
  const RawClient next = Connect();
  ExpectGoodSession(next);
}

TEST_F(ReceivePathTest, AClientThatReplacesAnotherKeepsTheSession) {
  Start();
  const RawClient first = Connect();
  OpenEngine(first);
  server_->WaitFor(folder_.Path("korv/engine_ecu.xml"));
  const RawClient second = Connect();
  EXPECT_TRUE(first.EndedByServer());
  EXPECT_THAT(server_->TraceUntil("          > State="), Not(Contains("close WinSock")));
  EXPECT_EQ(Hex(second.Ask(GetRequest(1, "N"))), Hex(Reply(kGetParameter, kSuccess, FourReals(800))));
}

TEST_F(ReceivePathTest, ManyClientsReplaceOneAnother) {
  Start();
  std::vector<std::unique_ptr<RawClient>> clients;
  for (int count = 0; count < 50; ++count) clients.push_back(std::make_unique<RawClient>(port_));
  for (int count = 0; count < 50; ++count) server_->WaitFor("          > State=");
  for (int count = 0; count < 49; ++count)
    EXPECT_TRUE(clients[static_cast<std::size_t>(count)]->EndedByServer());
  ExpectGoodSession(*clients.back());
}

TEST_F(ReceivePathTest, ClientsThatGoAwayAtOnceAreSurvived) {
  Start();
  for (int count = 0; count < 50; ++count) {
    RawClient client = Connect();
    if (count % 2 == 0) client.Send(Request(kInit));
    if (count % 3 == 0) client.Abort();
    client.Close();
    TraceUntilListening();
  }
  const RawClient client = Connect();
  ExpectGoodSession(client);
}

TEST_F(ReceivePathTest, AHalfClosedConnectionIsADisconnect) {
  Start();
  {
    const RawClient client = Connect();
    Succeed(client, Request(kInit));
    client.EndSending();
    EXPECT_EQ(TraceUntilListening().back(), "          > LocalPort=" + std::to_string(port_));
    EXPECT_TRUE(client.EndedByServer());
  }
  const RawClient next = Connect();
  EXPECT_EQ(StatusOf(next.Ask(Request(kIdentify, Word(1) + Text("x")))), kNotProcessed);
}

TEST_F(ReceivePathTest, ASecondFrameDuringACommandGetsTheGlobalErrorAndWaitsForALaterArrival) {
  WritePair(
      "slow",
      EcuFile("Name=\"SLOW\" Protocol=\"DiagOnCAN\" P2Ms=\"60000\"", kEngineRequests, kEngineAnswers, 400),
      kEngineData);
  Start({"--debug"});
  const RawClient client = Connect();
  OpenPair(client, "slow");
  client.Ask(HarmlessRequest());
  server_->WaitFor("Byte send : 0008000D");

  client.Send(GetRequest(1, "N"));
  server_->WaitFor("Byte received : ");
  EXPECT_EQ(Hex(client.Ask(HarmlessRequest())), Hex(kGlobalError));
  const Lines lines = server_->TraceUntil("get parameter(1,N) ok   value = 800");
  EXPECT_THAT(lines,
              ElementsAre("Error : Command in progress, wait end of last command before send a command ",
                          "get parameter(1,N) ok   value = 800"));

  EXPECT_EQ(Hex(client.Ask(Request(4))), Hex(Reply(kSwitching, kSuccess)));
  EXPECT_EQ(server_->WaitFor("Byte received : "), "Byte received : " + Hex(HarmlessRequest() + Request(4)));
  EXPECT_EQ(Hex(client.Ask(Request(5))), Hex(Reply(5, kUnknownCommand)));
}

TEST_F(ReceivePathTest, EveryFurtherFrameDuringACommandGetsTheGlobalError) {
  WritePair(
      "slow",
      EcuFile("Name=\"SLOW\" Protocol=\"DiagOnCAN\" P2Ms=\"60000\"", kEngineRequests, kEngineAnswers, 400),
      kEngineData);
  Start();
  const RawClient client = Connect();
  OpenPair(client, "slow");
  client.Send(SetRequest(1, "IDLE", 850));
  server_->WaitFor("set parameter(1,IDLE,850)");
  for (int count = 0; count < 3; ++count) EXPECT_EQ(Hex(client.Ask(Request(5))), Hex(kGlobalError));
  EXPECT_EQ(Hex(client.AskUntilFree(HarmlessRequest())), Hex(Reply(5, kUnknownCommand)));
  EXPECT_EQ(Hex(client.Ask(GetRequest(1, "IDLE"))), Hex(Reply(kGetParameter, kSuccess, FourReals(850))));
}

}  // namespace
}  // namespace korval::tests
