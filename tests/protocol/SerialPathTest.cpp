// SPDX-License-Identifier: MIT
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/Failure.h"
#include "protocol/FieldCodec.h"
#include "protocol/SerialPath.h"
#include "tests/support/ProtocolBench.h"

namespace korval::protocol {
namespace {

using namespace std::chrono_literals;
using base::ByteBuffer;
using State = SessionState::State;
using Replies = std::vector<std::string>;
using Texts = std::vector<std::string>;
using tests::Request;

constexpr const char* kInitRequest = "000600020008";
constexpr const char* kInitReply = "000800020000000A";
constexpr const char* kSwitchRequest = "0008000D00010016";
constexpr const char* kSwitchReply = "0008000D00000015";

// The word 1, which the attached handlers answer to get parameter.
constexpr const char* kGetReply = "000A000E000000010019";

class SerialPathTest : public ::testing::Test {
 protected:
  void SetUp() override {
    bench_.port.Open();
    bench_.Forget();
  }

  void Arrive(const std::string& hex) { bench_.port.Arrive(ByteBuffer::FromHex(hex)); }
  Replies Written() { return bench_.port.TakeWritten(); }
  std::string TimeoutPanel() { return bench_.view.panels["timeout"]; }
  Texts& TimeoutHistory() { return bench_.view.history["timeout"]; }
  void AttachHandler(CommandCode code, const std::function<void()>& act) {
    bench_.server->dispatcher.Attach(code, [act](base::ByteView, ByteBuffer& reply) {
      act();
      AppendWord(reply, 1);
      return 0;
    });
    bench_.server->state.Set(State::kFileSelected);
  }

  tests::ProtocolBench bench_;
};

TEST_F(SerialPathTest, AWholeFrameIsAnswered) {
  Arrive(kInitRequest);
  EXPECT_EQ(Written(), Replies{kInitReply});
  EXPECT_EQ(bench_.trace, "init()\r\n");
  EXPECT_EQ(TimeoutHistory(), (Texts{"Timeout armed", "Timeout stop"}));
}

TEST_F(SerialPathTest, AFrameByteByByteIsAnsweredOnceItsLastByteIsThere) {
  const std::string frame = kSwitchRequest;
  for (std::size_t i = 0; i + 2 < frame.size(); i += 2) {
    Arrive(frame.substr(i, 2));
    EXPECT_EQ(Written(), Replies{}) << i;
    EXPECT_EQ(TimeoutPanel(), "Timeout armed");
    bench_.loop.Advance(999ms);
  }
  Arrive(frame.substr(frame.size() - 2));
  EXPECT_EQ(Written(), Replies{kSwitchReply});
  EXPECT_EQ(TimeoutPanel(), "Timeout stop");
}

TEST_F(SerialPathTest, AFrameSplitAnywhereIsAnswered) {
  const std::string frame = kSwitchRequest;
  for (std::size_t cut = 2; cut < frame.size(); cut += 2) {
    Arrive(frame.substr(0, cut));
    Arrive(frame.substr(cut));
    EXPECT_EQ(Written(), Replies{kSwitchReply}) << cut;
  }
}

TEST_F(SerialPathTest, ASingleByteHeldIsNotYetALength) {
  Arrive("00");
  EXPECT_EQ(TimeoutPanel(), "Timeout armed");
  Arrive("0600020008");
  EXPECT_EQ(Written(), Replies{kInitReply});
}

TEST_F(SerialPathTest, AReceiveEventWithoutBytesIsSurvived) {
  Arrive("");
  Arrive(kInitRequest);
  EXPECT_EQ(Written(), Replies{kInitReply});
}

TEST_F(SerialPathTest, BytesBeyondTheFrameAreDropped) {
  Arrive(std::string(kInitRequest) + kSwitchRequest);
  EXPECT_EQ(Written(), Replies{kInitReply});
  Arrive(kSwitchRequest);
  EXPECT_EQ(Written(), Replies{kSwitchReply});
}

TEST_F(SerialPathTest, ALengthOfZeroEmptiesTheBufferAtOnce) {
  for (const char* bytes : {"0000", "00000006", "000000020002"}) {
    Arrive(bytes);
    EXPECT_EQ(TimeoutPanel(), "Timeout stop");
    Arrive(kInitRequest);
    EXPECT_EQ(Written(), Replies{kInitReply}) << bytes;
  }
}

TEST_F(SerialPathTest, ALengthBelowSixOrOddIsTracedUnansweredAndEmptiesTheBuffer) {
  for (const char* bytes : {"0001", "00020002", "00040002", "000500020007", "00070002000900"}) {
    bench_.Forget();
    Arrive(bytes);
    EXPECT_EQ(bench_.trace.rfind("Error : Invalid asap frame (", 0), 0U) << bytes << bench_.trace;
    EXPECT_EQ(TimeoutPanel(), "Timeout stop") << bytes;
    EXPECT_EQ(Written(), Replies{}) << bytes;
    Arrive(kInitRequest);
    EXPECT_EQ(Written(), Replies{kInitReply}) << bytes;
  }
}

TEST_F(SerialPathTest, TheBytesThatALyingLengthAnnouncesAreGivenUpByTheWatchdog) {
  for (const char* bytes : {"FFFF", "FFFE0002", "0009000200"}) {
    Arrive(bytes);
    EXPECT_EQ(TimeoutPanel(), "Timeout armed") << bytes;
    bench_.loop.Advance(1s);
    EXPECT_EQ(TimeoutPanel(), "Timeout fail") << bytes;
    Arrive(kInitRequest);
    EXPECT_EQ(Written(), Replies{kInitReply}) << bytes;
  }
}

TEST_F(SerialPathTest, AWrongChecksumIsTracedUnansweredAndEmptiesTheBuffer) {
  Arrive("000600020009");
  EXPECT_EQ(bench_.trace, "erreur de checksum \r\n");
  EXPECT_EQ(TimeoutPanel(), "Timeout stop");
  EXPECT_EQ(Written(), Replies{});
  Arrive(kInitRequest);
  EXPECT_EQ(Written(), Replies{kInitReply});
}

TEST_F(SerialPathTest, FramesAreNotDumpedEvenWithDebugTrace) {
  bench_.server->console.SetDebugTrace(true);
  Arrive(kSwitchRequest);
  EXPECT_EQ(bench_.trace, "switching offline/online(1)\r\n");
}

TEST_F(SerialPathTest, TheLongestFrameArrivesInPieces) {
  std::size_t seen = 0;
  bench_.server->dispatcher.Attach(CommandCode::kSetParameter, [&](base::ByteView parameters, ByteBuffer&) {
    seen = parameters.size();
    return 0;
  });
  bench_.server->state.Set(State::kFileSelected);
  const std::string frame = Request(15, std::string(std::size_t{2} * (65534 - 6), 'A')).ToHex();
  for (std::size_t i = 0; i < frame.size(); i += 2000) Arrive(frame.substr(i, 2000));
  EXPECT_EQ(seen, 65528U);
  EXPECT_EQ(Written(), Replies{"0008000F00000017"});
}

// The watchdog.

TEST_F(SerialPathTest, AStalledFrameIsDroppedAfterASecondAndTheNextOneIsAnswered) {
  Arrive("000600");
  bench_.loop.Advance(999ms);
  EXPECT_EQ(TimeoutPanel(), "Timeout armed");
  EXPECT_EQ(bench_.trace, "");
  bench_.loop.Advance(1ms);
  EXPECT_EQ(TimeoutPanel(), "Timeout fail");
  EXPECT_EQ(bench_.trace, "Timeout fail - empty buffer\r\n");
  Arrive(kInitRequest);
  EXPECT_EQ(Written(), Replies{kInitReply});
}

TEST_F(SerialPathTest, TheWatchdogFiresOnce) {
  Arrive("000600");
  bench_.loop.Advance(10s);
  EXPECT_EQ(bench_.trace, "Timeout fail - empty buffer\r\n");
}

TEST_F(SerialPathTest, EachPieceRestartsTheFullInterval) {
  Arrive("0006");
  bench_.loop.Advance(900ms);
  Arrive("0002");
  bench_.loop.Advance(999ms);
  EXPECT_EQ(TimeoutPanel(), "Timeout armed");
  bench_.loop.Advance(1ms);
  EXPECT_EQ(TimeoutPanel(), "Timeout fail");
}

TEST_F(SerialPathTest, AnAnsweredFrameLeavesNoWatchdogBehind) {
  Arrive(kInitRequest);
  bench_.Forget();
  bench_.loop.Advance(10s);
  EXPECT_EQ(bench_.trace, "");
  EXPECT_EQ(TimeoutPanel(), "Timeout stop");
}

TEST_F(SerialPathTest, ASingleByteIsDroppedByTheWatchdogToo) {
  Arrive("FF");
  bench_.loop.Advance(1s);
  EXPECT_EQ(TimeoutPanel(), "Timeout fail");
  Arrive(kInitRequest);
  EXPECT_EQ(Written(), Replies{kInitReply});
}

TEST_F(SerialPathTest, GarbageBeforeAFrameIsDroppedByTheWatchdog) {
  Arrive("FFFE");
  Arrive(kInitRequest);  // counts as part of the long frame that the garbage announced
  EXPECT_EQ(Written(), Replies{});
  bench_.loop.Advance(1s);
  Arrive(kInitRequest);
  EXPECT_EQ(Written(), Replies{kInitReply});
}

// The other comm events.

TEST_F(SerialPathTest, LineErrorsAreTracedByTheirMessages) {
  const struct {
    std::int32_t code;
    const char* trace;
  } rows[] = {{1001, "Error : Break Received\r\n"}, {1007, "Error : Carrier Detect Timeout\r\n"},
              {1002, "Error : CTS Timeout\r\n"},    {1011, "Error : Error retrieving DCB\r\n"},
              {1003, "Error : DSR Timeout\r\n"},    {1004, "Error : Framing Error\r\n"},
              {1006, "Error : Overrun Error\r\n"},  {1008, "Error : Receive Buffer Overflow\r\n"},
              {1009, "Error : Parity Error\r\n"},   {1010, "Error : Transmit Buffer Full\r\n"}};
  for (const auto& row : rows) {
    bench_.port.Report(static_cast<CommEvent>(row.code));
    EXPECT_EQ(bench_.TakeTrace(), row.trace);
  }
}

TEST_F(SerialPathTest, TheSendEventAndEventsWithoutMessageAreIgnored) {
  for (const std::int32_t code : {1, 0, 3, 4, 5, 6, 7, 1000, 1005, 1012, -1}) {
    bench_.port.Report(static_cast<CommEvent>(code));
    EXPECT_EQ(bench_.TakeTrace(), "") << code;
  }
  EXPECT_TRUE(TimeoutHistory().empty());
}

TEST_F(SerialPathTest, ALineErrorLeavesThePartialFrameToTheWatchdog) {
  Arrive("0006");
  bench_.port.Report(CommEvent::kParity);
  EXPECT_EQ(TimeoutPanel(), "Timeout armed");
  Arrive("00020008");
  EXPECT_EQ(Written(), Replies{kInitReply});
}

// Opening and closing.

TEST_F(SerialPathTest, TheToggleOpensAClosedPort) {
  tests::ProtocolBench bench;
  bench.port.SetPortNumber(3);
  bench.port.SetSettings("19200,e,7,2");
  bench.server->serial.Toggle();
  EXPECT_TRUE(bench.port.IsOpen());
  EXPECT_EQ(bench.log, (tests::CallLog{"open", "raw bytes", "toggled open"}));
  EXPECT_EQ(bench.view.panels["Settings"], "COM3 Settings: 19200,e,7,2");
}

TEST_F(SerialPathTest, TheToggleClosesAnOpenPortAndSetsTheInputModeAllTheSame) {
  bench_.server->serial.Toggle();
  EXPECT_FALSE(bench_.port.IsOpen());
  EXPECT_EQ(bench_.log, (tests::CallLog{"close serial", "raw bytes", "toggled closed"}));
  EXPECT_EQ(bench_.view.panels["Settings"], "COM1 Settings: 9600,n,8,1");
}

TEST_F(SerialPathTest, AToggleThatFailsLeavesThePortAsItIsAndSaysWhy) {
  tests::ProtocolBench bench;
  bench.port.open_failure = "COM1 does not exist";
  bench.server->serial.Toggle();
  EXPECT_FALSE(bench.port.IsOpen());
  EXPECT_FALSE(bench.Logged("toggled open"));
  EXPECT_NE(bench.trace.find("COM1 does not exist"), std::string::npos);

  bench_.port.close_failure = "COM1 is stuck";
  bench_.server->serial.Toggle();
  EXPECT_TRUE(bench_.port.IsOpen());
  EXPECT_FALSE(bench_.Logged("toggled closed"));
}

TEST_F(SerialPathTest, AFailedCloseReachesTheCaller) {
  bench_.port.close_failure = "COM1 is stuck";
  EXPECT_THROW(bench_.server->serial.Close(), base::Failure);
}

TEST_F(SerialPathTest, AfterAFailedToggleThePortCanBeOpened) {
  tests::ProtocolBench bench;
  bench.port.open_failure = "COM1 does not exist";
  bench.server->serial.Toggle();
  bench.port.open_failure.clear();
  bench.server->serial.Toggle();
  EXPECT_TRUE(bench.port.IsOpen());
  bench.port.Arrive(ByteBuffer::FromHex(kInitRequest));
  EXPECT_EQ(bench.port.TakeWritten(), Replies{kInitReply});
}

TEST_F(SerialPathTest, AnUnpluggedPortIsReportedShownAsClosedAndCanBeOpenedAgain) {
  bench_.port.Unplug();
  EXPECT_EQ(bench_.trace, "Error : Error retrieving DCB\r\n");
  EXPECT_TRUE(bench_.Logged("toggled closed"));
  EXPECT_FALSE(bench_.view.connected);
  bench_.server->serial.Toggle();
  EXPECT_TRUE(bench_.port.IsOpen());
  EXPECT_TRUE(bench_.view.connected);
  Arrive(kInitRequest);
  EXPECT_EQ(Written(), Replies{kInitReply});
}

TEST_F(SerialPathTest, AHalfFrameDoesNotOutliveAReopenedPort) {
  Arrive("000600");
  bench_.server->serial.Toggle();
  bench_.server->serial.Toggle();
  bench_.loop.Advance(1s);
  Arrive(kInitRequest);
  EXPECT_EQ(Written(), Replies{kInitReply});
}

// No guard against frames inside a command's wait.

// Bytes that arrive inside a command's wait join the frame that is still in the buffer, so it is this frame
// that is served once more.

TEST_F(SerialPathTest, BytesInsideASerialCommandServeTheHeldFrameAgainAndGetNoCannedFrame) {
  int runs = 0;
  AttachHandler(CommandCode::kGetParameter, [&] {
    if (++runs == 1) Arrive(kSwitchRequest);
  });
  Arrive(Request(14).ToHex());
  EXPECT_EQ(runs, 2);
  EXPECT_EQ(Written(), (Replies{kGetReply, kGetReply}));  // also where the buffer was emptied meanwhile
  EXPECT_EQ(bench_.trace, "");
  Arrive(kSwitchRequest);
  EXPECT_EQ(Written(), Replies{kSwitchReply});
}

TEST_F(SerialPathTest, FramesInsideFramesAreBounded) {
  int depth = 0;
  int deepest = 0;
  int entries = 0;
  AttachHandler(CommandCode::kGetParameter, [&] {
    deepest = std::max(deepest, ++depth);
    if (++entries < 1000) Arrive(Request(14).ToHex());
    --depth;
  });
  Arrive(Request(14).ToHex());
  EXPECT_GT(deepest, 1);
  EXPECT_LE(deepest, SerialPath::kMostCommands);
  Written();
  AttachHandler(CommandCode::kGetParameter, [] {});
  bench_.loop.Advance(1s);
  Arrive(kSwitchRequest);
  EXPECT_EQ(Written(), Replies{kSwitchReply});
}

TEST_F(SerialPathTest, BytesInsideATcpCommandServeTheHeldFrameOnTheSerialLineAndBothGoOn) {
  bench_.ConnectClient();
  for (const char* bytes : {"00", "0008000D", "0000", "0007", "FFFE", kSwitchRequest}) {
    int runs = 0;
    AttachHandler(CommandCode::kGetParameter, [&] {
      if (++runs == 1) Arrive(bytes);
    });
    bench_.socket.Arrive(Request(14));
    EXPECT_EQ(runs, 2) << bytes;
    EXPECT_EQ(Written(), Replies{kGetReply}) << bytes;
    EXPECT_LE(bench_.socket.TakeSent().size(), 1U) << bytes;
    bench_.socket.Arrive(ByteBuffer::FromHex(kSwitchRequest));
    EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply}) << bytes;
    Arrive(kSwitchRequest);
    EXPECT_EQ(Written(), Replies{kSwitchReply}) << bytes;
  }
}

TEST_F(SerialPathTest, ATcpFrameInsideASerialCommandIsServedAndTheNextSerialOneToo) {
  bench_.ConnectClient();
  AttachHandler(CommandCode::kGetParameter,
                [&] { bench_.socket.Arrive(ByteBuffer::FromHex(kSwitchRequest)); });
  Arrive(Request(14).ToHex());
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
  EXPECT_LE(Written().size(), 1U);
  Arrive(kSwitchRequest);
  EXPECT_EQ(Written(), Replies{kSwitchReply});
}

TEST_F(SerialPathTest, ATcpFrameBetweenTheHalvesOfASerialFrameDestroysTheFirstHalf) {
  bench_.ConnectClient();
  Arrive("0008000D");
  bench_.socket.Arrive(ByteBuffer::FromHex(kSwitchRequest));
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
  Arrive("00010016");
  EXPECT_EQ(Written(), Replies{});
  bench_.loop.Advance(1s);
  Arrive(kSwitchRequest);
  EXPECT_EQ(Written(), Replies{kSwitchReply});
}

TEST_F(SerialPathTest, BothTransportsServeOneSession) {
  bench_.ConnectClient();
  Arrive(kInitRequest);
  EXPECT_EQ(Written(), Replies{kInitReply});
  bench_.socket.Arrive(Request(20, "02010000"));
  EXPECT_EQ(bench_.server->state.Current(), State::kIdentify);
}

TEST_F(SerialPathTest, AReplyToAnEarlierOpeningOfThePortGoesNowhere) {
  AttachHandler(CommandCode::kGetParameter, [&] {
    bench_.server->serial.Toggle();
    bench_.server->serial.Toggle();
  });
  Arrive(Request(14).ToHex());
  EXPECT_EQ(Written(), Replies{});
  EXPECT_TRUE(bench_.port.IsOpen());
}

TEST_F(SerialPathTest, TheServerMayBeLetGoInsideACommand) {
  std::weak_ptr<tests::ProtocolBench::Server> watcher = bench_.server;
  AttachHandler(CommandCode::kGetParameter, [&] { bench_.server.reset(); });
  Arrive(Request(14).ToHex());
  EXPECT_TRUE(watcher.expired());
  bench_.Forget();
  Arrive("000600");
  bench_.port.Report(CommEvent::kBreak);
  bench_.loop.Advance(10s);
  EXPECT_TRUE(bench_.trace.empty());
}

TEST_F(SerialPathTest, TheServerMayBeLetGoWhileTheWatchdogIsArmed) {
  Arrive("000600");
  bench_.server.reset();
  bench_.Forget();
  bench_.loop.Advance(10s);
  EXPECT_TRUE(bench_.trace.empty());
}

}  // namespace
}  // namespace korval::protocol
