// SPDX-License-Identifier: MIT
// The client on the serial line, over a real pseudo terminal.
#include "tests/system/SerialLine.h"
#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::HasSubstr;

class SerialSessionTest : public ServerBench {
 protected:
  void StartOnLine(std::vector<std::string> more_options = {}) {
    for (const std::string& option :
         {std::string("--serial-port"), std::string("5"), std::string("--serial-device"), line_.Device(),
          std::string("--open-serial")}) {
      more_options.push_back(option);
    }
    Start(more_options);
    server_->WaitFor("- Open com port");
    Settle();
    server_->WaitFor("close WinSock");
  }

  // Once the server answers this its start is complete, the line open, and what it read there dealt with.
  void Settle() const {
    const RawClient client = Connect();
    EXPECT_EQ(StatusOf(client.Ask(HarmlessRequest())), kSuccess);
  }

  // Gives the server time for what the line brought, without a frame: the buffer is shared, and a frame over
  // TCP would destroy the first half of one on the line.
  void SettleWithoutFrame() {
    Connect().Close();
    server_->WaitFor("close WinSock");
  }

  void ExpectAnswer() const {
    EXPECT_EQ(Hex(line_.Ask(HarmlessRequest())), Hex(Reply(kSwitching, kSuccess)));
  }

  void OpenEngineOnLine() const {
    EXPECT_EQ(StatusOf(line_.Ask(Request(kInit))), kSuccess);
    EXPECT_EQ(StatusOf(line_.Ask(Request(kIdentify, Word(0x0201) + Text("Bench")))), kSuccess);
    EXPECT_EQ(Hex(line_.Ask(SelectRequest("engine.xml", "ENGINE_MAP"))),
              Hex(Reply(kSelectFile, kSuccess, Word(1))));
  }

  SerialLine line_;
};

TEST_F(SerialSessionTest, AWholeSessionAnswersAsOverTcp) {
  StartOnLine();
  OpenEngineOnLine();
  const std::vector<std::string> requests = {GetRequest(1, "N"),
                                             AcquisitionRequest(1, {"N", "CUT"}),
                                             Request(kGetOnlineValue),
                                             SetRequest(1, "IDLE", 850),
                                             ExtendedGetRequest(1, "N"),
                                             Request(99),
                                             Request(kExit),
                                             GetRequest(1, "N")};
  std::vector<std::string> on_line;
  for (const std::string& request : requests) on_line.push_back(Hex(line_.Ask(request)));
  const RawClient client = Connect();
  OpenEngine(client);
  for (std::size_t i = 0; i < requests.size(); ++i) EXPECT_EQ(Hex(client.Ask(requests[i])), on_line[i]);
  StopInOrder();
}

TEST_F(SerialSessionTest, AFrameThatComesByteByByteIsAnswered) {
  StartOnLine();
  for (const char byte : HarmlessRequest()) {
    line_.Send(std::string(1, byte));
    SettleWithoutFrame();
  }
  EXPECT_EQ(Hex(line_.Receive()), Hex(Reply(kSwitching, kSuccess)));
  StopInOrder();
}

TEST_F(SerialSessionTest, EveryByteValuePassesUnchanged) {
  StartOnLine({"--debug"});
  std::string name;
  for (int byte = 0; byte < 256; ++byte) name.push_back(static_cast<char>(byte));
  EXPECT_EQ(StatusOf(line_.Ask(Request(kInit))), kSuccess);
  EXPECT_EQ(StatusOf(line_.Ask(Request(kIdentify, Word(1) + Text(name)))), kSuccess);
  StopInOrder();
}

TEST_F(SerialSessionTest, AStalledFrameIsDroppedByTheWatchdogAndTheNextIsAnswered) {
  StartOnLine();
  line_.Send(HarmlessRequest().substr(0, 5));
  server_->WaitFor("Timeout fail - empty buffer");
  ExpectAnswer();
  StopInOrder();
}

TEST_F(SerialSessionTest, GarbageBeforeAFrameCostsThatFrameAndNotTheNext) {
  StartOnLine();
  line_.Send(FromHex("FF FE 12") + HarmlessRequest());
  server_->WaitFor("Timeout fail - empty buffer");
  ExpectAnswer();
  StopInOrder();
}

TEST_F(SerialSessionTest, ALengthOfZeroEmptiesTheBufferAtOnce) {
  StartOnLine();
  line_.Send(FromHex("00 00"));
  line_.WaitUntilTaken();
  Settle();  // a frame that came with the two bytes would be dropped with them
  ExpectAnswer();
  StopInOrder();
}

TEST_F(SerialSessionTest, ASingleByteIsNotYetALength) {
  StartOnLine();
  line_.Send(FromHex("00"));
  SettleWithoutFrame();
  line_.Send(HarmlessRequest().substr(1));
  EXPECT_EQ(Hex(line_.Receive()), Hex(Reply(kSwitching, kSuccess)));
  StopInOrder();
}

TEST_F(SerialSessionTest, LengthsThatNoFrameHasAreTracedAndDropped) {
  StartOnLine();
  for (const char* bytes : {"00 04 00 02", "00 07 00 02 00 09 00", "00 02"}) {
    line_.Send(FromHex(bytes));
    server_->WaitFor("Error : Invalid asap frame (");
    ExpectAnswer();
  }
  StopInOrder();
}

TEST_F(SerialSessionTest, AWrongChecksumIsTracedAndNotAnswered) {
  StartOnLine();
  std::string damaged = HarmlessRequest();
  damaged.back() = static_cast<char>(damaged.back() + 1);
  line_.Send(damaged);
  server_->WaitFor("erreur de checksum ");
  EXPECT_FALSE(line_.HasInput());
  ExpectAnswer();
  StopInOrder();
}

TEST_F(SerialSessionTest, BothTransportsWorkOnOneSession) {
  StartOnLine();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(line_.Ask(GetRequest(1, "N"))), Hex(client.Ask(GetRequest(1, "N"))));
  EXPECT_EQ(StatusOf(line_.Ask(Request(kExit))), kSuccess);
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(1, "N"))), kNotProcessed);
  StopInOrder();
}

TEST_F(SerialSessionTest,
       AFrameDuringAWaitingTcpCommandRunsWhatTheSharedBufferHoldsAndBothRepliesCarryTheirCode) {
  WritePair(
      "slow",
      EcuFile("Name=\"SLOW\" Protocol=\"DiagOnCAN\" P2Ms=\"60000\"", kEngineRequests, kEngineAnswers, 300),
      kEngineData);
  StartOnLine({"--debug"});
  const RawClient client = Connect();
  OpenPair(client, "slow");
  const std::string request = GetRequest(1, "N");
  client.Send(request);
  server_->WaitFor("Byte received : " + Hex(request));
  line_.Send(HarmlessRequest());
  const std::string on_line = line_.Receive();
  EXPECT_EQ(WordAt(on_line, 2), kGetParameter) << "the TCP request still stood in the buffer";
  const std::string on_tcp = client.Receive();
  EXPECT_EQ(WordAt(on_tcp, 2), kGetParameter) << "the serial path has emptied the buffer";
  EXPECT_EQ(DataOf(on_tcp), DataOf(on_line));
  ExpectAnswer();
  ExpectGoodSession(client);
  StopInOrder();
}

TEST_F(SerialSessionTest, TheLineIsServedAfterATcpClientLeftItsWaitingCommand) {
  WritePair(
      "slow",
      EcuFile("Name=\"SLOW\" Protocol=\"DiagOnCAN\" P2Ms=\"60000\"", kEngineRequests, kEngineAnswers, 50000),
      kEngineData);
  StartOnLine({"--debug"});
  RawClient client = Connect();
  OpenPair(client, "slow");
  client.Send(GetRequest(1, "N"));
  server_->WaitFor("Byte received : " + Hex(GetRequest(1, "N")));
  client.Close();
  server_->WaitFor("close WinSock");
  server_->WaitForPort();
  OpenEngineOnLine();
  StopInOrder();
}

TEST_F(SerialSessionTest, ARemoteRebootIsAnsweredFirstAndDropsTheTcpClientToo) {
  StartOnLine();
  const RawClient client = Connect();
  OpenEngine(client);
  EXPECT_EQ(Hex(line_.Ask(ExtendedSetRequest(1, "pcreboot", ""))), Hex(Reply(kExtendedSet, kSuccess)));
  server_->WaitFor("Remote reboot asked ...");
  EXPECT_TRUE(client.EndedByServer());
  EXPECT_EQ(server_->WaitForPort(), port_);
  EXPECT_EQ(StatusOf(line_.Ask(GetRequest(1, "N"))), kNotProcessed);
  ExpectAnswer();
  StopInOrder();
}

TEST_F(SerialSessionTest, AnUnpluggedDeviceIsReportedAndTcpGoesOn) {
  StartOnLine();
  line_.Unplug();
  EXPECT_THAT(server_->WaitFor("Serial device "), HasSubstr("was lost"));
  server_->WaitFor("Error : Error retrieving DCB");
  ExpectGoodSession(Connect());
  StopInOrder();
}

TEST_F(SerialSessionTest, ADeviceThatDoesNotExistIsNamedAndTcpIsServed) {
  Start({"--serial-port", "5", "--serial-device", "/dev/does-not-exist", "--open-serial"});
  EXPECT_THAT(server_->WaitFor("Error : Serial port COM5"), HasSubstr("/dev/does-not-exist"));
  ExpectGoodSession(Connect());
  StopInOrder();
}

}  // namespace
}  // namespace korval::tests
