// SPDX-License-Identifier: MIT
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/Failure.h"
#include "base/Signal.h"
#include "protocol/FieldCodec.h"
#include "protocol/Frame.h"
#include "protocol/TcpPath.h"
#include "tests/support/ProtocolBench.h"

namespace korval::protocol {
namespace {

using base::ByteBuffer;
using State = SessionState::State;
using Replies = std::vector<std::string>;
using tests::Request;

constexpr const char* kInitRequest = "000600020008";
constexpr const char* kInitReply = "000800020000000A";
constexpr const char* kExitRequest = "000600320038";
constexpr const char* kExitReply = "000800320000003A";
constexpr const char* kSwitchRequest = "0008000D00010016";
constexpr const char* kSwitchReply = "0008000D00000015";
constexpr const char* kCanned = "00180073FFFF0001000C476C6F62616C206572726F721B1A";
constexpr const char* kBusyTrace =
    "Error : Command in progress, wait end of last command before send a command \r\n";
constexpr const char* kListenTrace =
    "Init WinSock : port=1001\r\n"
    "          > LocalHostName=bench\r\n"
    "          > LocalIP=127.0.0.1\r\n"
    "          > LocalPort=1001\r\n";

class TcpPathTest : public ::testing::Test {
 protected:
  void SetUp() override { bench_.ConnectClient(); }

  void Arrive(const std::string& hex) { bench_.socket.Arrive(ByteBuffer::FromHex(hex)); }
  /// Lets so much time go by that bytes before and after it are two arrivals.
  void Pause() { bench_.loop.Advance(TcpPath::kArrivalGap); }
  /// Sends the frame in pieces of `size` bytes, `gap` apart.
  void ArriveInPieces(const ByteBuffer& frame, std::size_t size, base::Duration gap) {
    for (std::size_t offset = 0; offset < frame.Length(); offset += size) {
      if (offset > 0) bench_.loop.Advance(gap);
      bench_.socket.Arrive(ByteBuffer(frame.View(offset, std::min(size, frame.Length() - offset))));
    }
  }
  /// Attaches a command whose handler waits while `meanwhile` happens, then answers the word 1.
  void AttachWaiting(CommandCode code, const std::function<void()>& meanwhile) {
    bench_.server->dispatcher.Attach(code, [meanwhile](base::ByteView, ByteBuffer& reply) {
      meanwhile();
      AppendWord(reply, 1);
      return 0;
    });
    bench_.server->state.Set(State::kFileSelected);
  }
  State CurrentState() const { return bench_.server->state.Current(); }

  tests::ProtocolBench bench_;
};

/// What a client sends to reach the waiting command that the tests attach to get parameter.
std::string WaitingRequest() { return Request(14).ToHex(); }
constexpr const char* kWaitingReply = "000A000E000000010019";

TEST_F(TcpPathTest, APowerRequestOfAClientThatIsNotTrustedIsAnsweredAndRefused) {
  const std::vector<std::pair<PowerRequest, std::string>> requests = {{PowerRequest::kReboot, "reboot"},
                                                                      {PowerRequest::kShutdown, "shutdown"}};
  for (const auto& [request, name] : requests) {
    bench_.services.has_diagnosis_object = true;
    bench_.socket.is_client_trusted = false;
    AttachWaiting(CommandCode::kGetParameter, [&] { bench_.server->runner.PendingPowerRequest() = request; });
    Arrive(WaitingRequest());
    EXPECT_EQ(bench_.socket.TakeSent(), Replies{kWaitingReply});
    EXPECT_EQ(bench_.TakeTrace(),
              "Remote " + name +
                  " refused: 127.0.0.2 is neither this machine nor an allowed client; name it "
                  "(--allow 127.0.0.2, or Allowed clients in the settings)\r\n");
    EXPECT_TRUE(bench_.services.has_diagnosis_object) << "the session goes on";
    EXPECT_TRUE(bench_.socket.HasClient());
    for (const std::string& entry : bench_.log)
      EXPECT_EQ(entry.find("ExitWindows"), std::string::npos) << entry;

    bench_.socket.is_client_trusted = true;
    AttachWaiting(CommandCode::kGetParameter, [] {});
    Arrive(WaitingRequest());
    EXPECT_EQ(bench_.TakeTrace(), "") << "nor is it carried out later";
    bench_.socket.TakeSent();
  }
}

TEST_F(TcpPathTest, ListeningTracesTheRequestedPortAndTheSocketsOwnValues) {
  tests::ProtocolBench bench;
  bench.server->tcp.StartListening();
  EXPECT_EQ(bench.trace, kListenTrace);
  EXPECT_TRUE(bench.socket.IsListening());
}

TEST_F(TcpPathTest, WithPortZeroThePortInUseIsTracedAndKeptAfterADisconnect) {
  tests::ProtocolBench bench;
  bench.server->tcp.SetPort(0);
  bench.server->tcp.StartListening();
  EXPECT_NE(bench.TakeTrace().find("          > LocalPort=40001\r\n"), std::string::npos);
  bench.socket.Connect();
  bench.socket.Leave();
  EXPECT_NE(bench.TakeTrace().find("          > LocalPort=40001\r\n"), std::string::npos);
}

TEST_F(TcpPathTest, APortThatCannotBeOpenedIsAFailureOfStartListeningAndATraceOfReopen) {
  tests::ProtocolBench bench;
  bench.socket.listen_failure = "port 1001 is taken";
  EXPECT_THROW(bench.server->tcp.StartListening(), base::Failure);
  bench.TakeTrace();
  bench.server->tcp.Reopen();
  EXPECT_NE(bench.TakeTrace().find("port 1001 is taken"), std::string::npos);
}

TEST_F(TcpPathTest, AConnectionIsTracedWithAllItsValues) {
  tests::ProtocolBench bench;
  bench.server->tcp.StartListening();
  bench.Forget();
  bench.socket.Connect();
  EXPECT_EQ(bench.trace,
            "Init WinSock : requestID=1\r\n"
            "          > Name=tcpServer\r\n"
            "          > LocalHostName=bench\r\n"
            "          > LocalIP=127.0.0.1\r\n"
            "          > LocalPort=1001\r\n"
            "          > RemoteHost=rig\r\n"
            "          > RemoteHostIP=127.0.0.2\r\n"
            "          > RemotePort=50007\r\n"
            "          > State=7\r\n");
}

TEST_F(TcpPathTest, TheConnectEventIsTraced) {
  bench_.socket.Connected();
  EXPECT_EQ(bench_.trace, "Connect WinSock\r\n");
}

TEST_F(TcpPathTest, ANewClientReplacesTheCurrentOneAndKeepsTheSession) {
  Arrive(kInitRequest);
  bench_.Forget();
  bench_.socket.TakeSent();
  EXPECT_EQ(bench_.socket.Connect(), 2);
  EXPECT_TRUE(bench_.Logged("accept 2"));
  EXPECT_FALSE(bench_.Logged("EndSession"));
  EXPECT_EQ(CurrentState(), State::kInit);
  Arrive(Request(20, "02010000").ToHex());
  EXPECT_EQ(bench_.socket.TakeSent().size(), 1U);
  EXPECT_EQ(CurrentState(), State::kIdentify);
}

TEST_F(TcpPathTest, AClientThatGaveUpBeforeItWasAcceptedLeavesAServerThatServesTheNext) {
  tests::ProtocolBench bench;
  bench.server->tcp.StartListening();
  bench.socket.ConnectAndGiveUp();
  EXPECT_FALSE(bench.socket.HasClient());
  bench.socket.Connect();
  bench.socket.Arrive(ByteBuffer::FromHex(kInitRequest));
  EXPECT_EQ(bench.socket.TakeSent(), Replies{kInitReply});
}

TEST_F(TcpPathTest, ADisconnectIsTracedResetsAsExitDoesAndListensAgain) {
  Arrive(kInitRequest);
  bench_.Forget();
  bench_.socket.Leave();
  EXPECT_EQ(bench_.trace, std::string("close WinSock\r\n") + kListenTrace);
  EXPECT_TRUE(bench_.Logged("EndSession"));
  EXPECT_EQ(CurrentState(), State::kIdle);
  EXPECT_EQ(bench_.view.session_status, "Status: Idle");
  EXPECT_TRUE(bench_.socket.IsListening());
  EXPECT_LT(bench_.LogIndex("EndSession"), bench_.LogIndex("listen"));
}

TEST_F(TcpPathTest, EachFrameIsAnsweredByOneFrame) {
  Arrive(kInitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply});
  Arrive(kSwitchRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
  Arrive(kExitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kExitReply});
}

TEST_F(TcpPathTest, ExitResetsBeforeItsReplyIsSent) {
  Arrive(kExitRequest);
  EXPECT_LT(bench_.LogIndex("EndSession"), bench_.LogIndex(std::string("send ") + kExitReply));
}

TEST_F(TcpPathTest, UnknownCommandsAndRefusalsAreAnsweredByTheirStatus) {
  Arrive("00060004000A");
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{"0008000456565662"});
  Arrive(Request(20, "02010000").ToHex());
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{"000800142343235F"});
}

TEST_F(TcpPathTest, AFrameSplitOverTwoArrivalsIsRefusedAndNeverCompleted) {
  Arrive("0006");
  Pause();
  EXPECT_EQ(bench_.TakeTrace(), "Error : Invalid asap frame (\\x00\\x06)\r\n");
  Arrive("00020008");
  EXPECT_EQ(bench_.TakeTrace(), "Error : Invalid asap frame (\\x00\\x02\\x00\\x08)\r\n");
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
  Arrive(kInitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply});
}

TEST_F(TcpPathTest, TheReceivedBytesOfAnInvalidFrameAreShownAsCharacters) {
  Arrive("FFFE4142B080");
  Pause();
  EXPECT_EQ(bench_.trace,
            "Error : Invalid asap frame (\xC3\xBF\xC3\xBE"
            "AB\xC2\xB0\xE2\x82\xAC)\r\n");
}

TEST_F(TcpPathTest, FewerBytesThanALengthFieldAreAnInvalidFrame) {
  Arrive("41");
  Pause();
  EXPECT_EQ(bench_.trace, "Error : Invalid asap frame (A)\r\n");
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
}

TEST_F(TcpPathTest, AnArrivalWithoutBytesIsSurvived) {
  Arrive("");
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
  Arrive(kInitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply});
}

TEST_F(TcpPathTest, LengthsBelowSixOrOddAreInvalidFramesWithoutReply) {
  for (const char* frame : {"0000", "000000020002", "000100020003", "00020002", "000400020006",
                            "000500020007", "00070002000900", "00090002000900000000"}) {
    Arrive(frame);
    const std::string trace = bench_.TakeTrace();
    EXPECT_EQ(trace.rfind("Error : Invalid asap frame (", 0), 0U) << frame << trace;
    EXPECT_EQ(trace.substr(trace.size() - 3), ")\r\n") << frame;
    EXPECT_EQ(bench_.socket.TakeSent(), Replies{}) << frame;
  }
  Arrive(kInitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply});
}

TEST_F(TcpPathTest, ALengthBeyondTheReceivedBytesIsAnInvalidFrame) {
  for (const char* frame : {"000800020008", "FFFE00020008", "FFFF00020008", "00080002000A"}) {
    Arrive(frame);
    Pause();
    EXPECT_EQ(bench_.TakeTrace().rfind("Error : Invalid asap frame (", 0), 0U) << frame;
    EXPECT_EQ(bench_.socket.TakeSent(), Replies{}) << frame;
  }
}

TEST_F(TcpPathTest, OfTwoFramesInOneArrivalOnlyTheFirstIsAnsweredAndTheSecondIsLost) {
  Arrive(std::string(kInitRequest) + kExitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply});
  EXPECT_EQ(CurrentState(), State::kInit);
  Arrive(kSwitchRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
}

TEST_F(TcpPathTest, AWrongChecksumIsTracedAndNotAnswered) {
  Arrive("000600020009");
  EXPECT_EQ(bench_.trace, "erreur de checksum \r\n");
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
  EXPECT_FALSE(bench_.Logged("CreateDiagnosisObject"));
  Arrive(kInitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply});
}

TEST_F(TcpPathTest, WithDebugTraceFramesAreDumpedInBothDirections) {
  bench_.server->console.SetDebugTrace(true);
  Arrive(kSwitchRequest);
  EXPECT_EQ(bench_.trace,
            "Byte received : 0008000D00010016\r\n"
            "switching offline/online(1)\r\n"
            "Byte send : 0008000D00000015\r\n");
}

TEST_F(TcpPathTest, WithoutDebugTraceNoFrameIsDumped) {
  Arrive(kSwitchRequest);
  EXPECT_EQ(bench_.trace, "switching offline/online(1)\r\n");
}

TEST_F(TcpPathTest, TheDumpOfAReceivedFrameIsTheWholeBufferAlsoWhenTheChecksumIsWrong) {
  bench_.server->console.SetDebugTrace(true);
  Arrive("000600020009ABCD");
  EXPECT_EQ(bench_.trace, "Byte received : 000600020009ABCD\r\nerreur de checksum \r\n");
}

TEST_F(TcpPathTest, TheDumpIsTracedBeforeTheReplyIsSent) {
  bench_.server->console.SetDebugTrace(true);
  Arrive(kSwitchRequest);
  EXPECT_LT(bench_.LogIndex("trace Byte send : 0008000D00000015\r\n"),
            bench_.LogIndex("send 0008000D00000015"));
}

TEST_F(TcpPathTest, AnInvalidFrameIsNotDumped) {
  bench_.server->console.SetDebugTrace(true);
  Arrive("41");
  Pause();
  EXPECT_EQ(bench_.trace, "Error : Invalid asap frame (A)\r\n");
}

TEST_F(TcpPathTest, TheLongestFrameIsServed) {
  std::size_t seen = 0;
  bench_.server->dispatcher.Attach(CommandCode::kSetParameter, [&](base::ByteView parameters, ByteBuffer&) {
    seen = parameters.size();
    return 0;
  });
  bench_.server->state.Set(State::kFileSelected);
  const std::string parameters(std::size_t{2} * (65534 - 6), 'A');
  bench_.socket.Arrive(Request(15, parameters));
  EXPECT_EQ(seen, 65528U);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{"0008000F00000017"});
}

TEST_F(TcpPathTest, TheLongestReplyIsSentAsOneFrame) {
  bench_.server->dispatcher.Attach(CommandCode::kGetOnlineValue, [](base::ByteView, ByteBuffer& reply) {
    reply.SetLength(kMaxReplyData);
    return 0;
  });
  bench_.server->state.Set(State::kFileSelected);
  bench_.socket.Arrive(Request(19));
  const Replies replies = bench_.socket.TakeSent();
  ASSERT_EQ(replies.size(), 1U);
  EXPECT_EQ(replies[0].size(), 2U * 65534U);
  EXPECT_EQ(replies[0].substr(0, 12), "FFFE00130000");
}

TEST_F(TcpPathTest, AFrameInPiecesIsServedInTheEventThatCompletesIt) {
  const ByteBuffer frame = Request(4, std::string(std::size_t{2} * (65534 - 6), 'A'));
  ArriveInPieces(frame, 1448, TcpPath::kArrivalGap - std::chrono::microseconds(1));
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{"0008000456565662"});
  bench_.loop.Advance(std::chrono::seconds(1));
  EXPECT_EQ(bench_.trace.find("Invalid asap frame"), std::string::npos);
}

TEST_F(TcpPathTest, AFrameByteByByteIsOneArrivalToo) {
  ArriveInPieces(ByteBuffer::FromHex(kSwitchRequest), 1, std::chrono::milliseconds(19));
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
}

TEST_F(TcpPathTest, AWholeFrameStartsNoTimer) {
  Arrive(kSwitchRequest);
  EXPECT_EQ(bench_.loop.PendingEvents(), 0U);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
}

TEST_F(TcpPathTest, APieceThatComesAfter20MsIsNotTheSameArrival) {
  ArriveInPieces(ByteBuffer::FromHex(kSwitchRequest), 4, TcpPath::kArrivalGap);
  Pause();
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
  EXPECT_EQ(bench_.trace.find("switching"), std::string::npos);
  EXPECT_NE(bench_.trace.find("Error : Invalid asap frame ("), std::string::npos);
}

TEST_F(TcpPathTest, AnIncompleteFrameIsRefusedWithAllOfItsPieces) {
  Arrive("00084142");
  bench_.loop.Advance(std::chrono::milliseconds(19));
  Arrive("4344");
  bench_.loop.Advance(std::chrono::milliseconds(19));
  EXPECT_EQ(bench_.trace, "");
  Pause();
  EXPECT_EQ(bench_.trace, "Error : Invalid asap frame (\\x00\\x08ABCD)\r\n");
}

TEST_F(TcpPathTest, TheRestOfARefusedFrameIsNotGluedToTheNextFrame) {
  const ByteBuffer frame = Request(4, std::string(200, '7'));
  for (const std::size_t first : {2U, 50U, 105U}) {
    bench_.socket.Arrive(ByteBuffer(frame.View(0, first)));
    Pause();
    bench_.socket.Arrive(ByteBuffer(frame.View(first, frame.Length() - first)));
    Arrive(kSwitchRequest);
    EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply}) << first;
  }
}

TEST_F(TcpPathTest, TheRestOfARefusedFrameMayComeInPiecesToo) {
  const ByteBuffer frame = Request(4, std::string(200, '7'));
  ArriveInPieces(frame, 30, TcpPath::kArrivalGap);
  Arrive(kSwitchRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
}

TEST_F(TcpPathTest, ALongFrameBehindATruncatedOneIsServed) {
  Arrive("00404142");
  Pause();
  ArriveInPieces(Request(4, std::string(4000, '7')), 1448, std::chrono::milliseconds(1));
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{"0008000456565662"});
}

TEST_F(TcpPathTest, OfTwoFramesInPiecesOnlyTheFirstIsAnsweredAndWhatCameWithItsEndIsLost) {
  ByteBuffer both = Request(4, std::string(4000, '7'));
  both.Append(ByteBuffer::FromHex(kSwitchRequest).View());
  ArriveInPieces(both, 1448, std::chrono::milliseconds(1));
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{"0008000456565662"});
}

TEST_F(TcpPathTest, AStatusOfMinusOneIsSentAsFFFF) {
  bench_.server->dispatcher.Attach(CommandCode::kGetOnlineValue,
                                   [](base::ByteView, ByteBuffer&) { return -1; });
  bench_.server->state.Set(State::kFileSelected);
  bench_.socket.Arrive(Request(19));
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{"00080013FFFF001A"});
}

// While a command waits, the events go on.

TEST_F(TcpPathTest, ASecondFrameDuringACommandGetsTheCannedFrameAndTheCommandsReplyIsNeverSent) {
  AttachWaiting(CommandCode::kGetParameter, [&] { Arrive(kInitRequest); });
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kCanned});
  EXPECT_EQ(bench_.trace, kBusyTrace);
  EXPECT_EQ(CurrentState(), State::kFileSelected);
}

TEST_F(TcpPathTest, EveryFurtherFrameDuringACommandGetsTheCannedFrame) {
  AttachWaiting(CommandCode::kGetParameter, [&] {
    Arrive(kInitRequest);
    Arrive("FF");
    Pause();
    Arrive(kExitRequest);
  });
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.TakeSent(), (Replies{kCanned, kCanned, kCanned}));
}

TEST_F(TcpPathTest, TheBytesOfARefusedFrameWaitInTheQueueForALaterArrival) {
  AttachWaiting(CommandCode::kGetParameter, [&] { Arrive(kSwitchRequest); });
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.Unread(), 8U);
  bench_.Forget();
  bench_.socket.TakeSent();
  Arrive(kInitRequest);  // now both are read, and only the first counts
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
  EXPECT_EQ(bench_.trace, "switching offline/online(1)\r\n");
  EXPECT_EQ(bench_.socket.Unread(), 0U);
}

TEST_F(TcpPathTest, ALongFrameDuringACommandGetsTheCannedFrameOnceAndStaysInTheQueue) {
  const ByteBuffer frame = Request(4, std::string(8000, '7'));
  AttachWaiting(CommandCode::kGetParameter, [&] {
    ArriveInPieces(frame, 1448, std::chrono::milliseconds(1));
    Arrive(kSwitchRequest);
    ArriveInPieces(frame, 1448, std::chrono::milliseconds(1));
  });
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.TakeSent(), (Replies{kCanned, kCanned, kCanned}));
  Pause();
  EXPECT_EQ(bench_.socket.Unread(), 2 * frame.Length() + 8);
}

TEST_F(TcpPathTest, ARefusedFrameWhoseRestComesAfterTheCommandHasEndedIsNotServed) {
  const ByteBuffer frame = Request(4, std::string(4000, '7'));
  AttachWaiting(CommandCode::kGetParameter, [&] { bench_.socket.Arrive(ByteBuffer(frame.View(0, 1448))); });
  Arrive(WaitingRequest());
  bench_.socket.Arrive(ByteBuffer(frame.View(1448, frame.Length() - 1448)));
  Pause();
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kCanned});
  EXPECT_EQ(bench_.trace, kBusyTrace);
  Arrive(kSwitchRequest);  // read together with the frame in the queue, which counts
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{"0008000456565662"});
}

TEST_F(TcpPathTest, AnIncompleteFrameOfAClientThatLeavesOrIsReplacedIsRefusedAtOnce) {
  Arrive("00084142");
  bench_.socket.Connect();
  EXPECT_EQ(bench_.TakeTrace().rfind("Error : Invalid asap frame (", 0), 0U);
  Arrive("00084344");
  bench_.socket.Leave();
  EXPECT_EQ(bench_.TakeTrace(),
            std::string("Error : Invalid asap frame (\\x00\\x08CD)\r\nclose WinSock\r\n") + kListenTrace);
}

TEST_F(TcpPathTest, AnArrivalThatWaitsForMoreGoesWithItsClient) {
  Arrive("0008");
  bench_.socket.Leave();
  bench_.socket.Connect();
  bench_.Forget();
  Pause();
  EXPECT_EQ(bench_.trace, "");
  Arrive(kSwitchRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
}

TEST_F(TcpPathTest, AReplyCarriesItsCommandsCodeWhateverTheSharedBufferHolds) {
  for (const char* held : {"", "0006000200", "FFFFFFFFFFFF"}) {
    AttachWaiting(CommandCode::kGetParameter,
                  [&, held] { bench_.server->runner.FrameBuffer() = ByteBuffer::FromHex(held); });
    Arrive(WaitingRequest());
    EXPECT_EQ(bench_.socket.TakeSent(), Replies{kWaitingReply}) << held;
  }
}

TEST_F(TcpPathTest, AfterASilencedCommandTheNextOneIsAnswered) {
  bool disturb = true;
  AttachWaiting(CommandCode::kGetParameter, [&] {
    if (disturb) Arrive("01");
    disturb = false;
  });
  Arrive(WaitingRequest());
  Pause();
  Arrive(WaitingRequest());  // read together with the byte that waits: no frame
  Pause();
  bench_.socket.TakeSent();
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kWaitingReply});
}

TEST_F(TcpPathTest, TheCannedFrameIsNotDumpedAndNeitherIsTheSilencedReply) {
  AttachWaiting(CommandCode::kGetParameter, [&] { Arrive(kInitRequest); });
  bench_.server->console.SetDebugTrace(true);
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.trace, "Byte received : " + WaitingRequest() + "\r\n" + kBusyTrace);
}

TEST_F(TcpPathTest, AnInvalidFrameOrAWrongChecksumDoesNotLeaveTheServerBusy) {
  for (const char* frame : {"41", "0000", "000600020009"}) {
    Arrive(frame);
    Pause();
    Arrive(kInitRequest);
    EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply}) << frame;
  }
}

TEST_F(TcpPathTest, AFailingHandlerDoesNotLeaveTheServerBusy) {
  bench_.server->dispatcher.Attach(
      CommandCode::kGetParameter,
      [](base::ByteView, ByteBuffer&) -> std::int32_t { throw base::Failure("no answer"); });
  bench_.server->state.Set(State::kFileSelected);
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{"0016000EFFFF000100096E6F20616E7377657200E6D5"});
  Arrive(kInitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply});
}

TEST_F(TcpPathTest, TheReplyOfACommandWhoseClientLeftGoesNowhere) {
  AttachWaiting(CommandCode::kGetParameter, [&] { bench_.socket.Leave(); });
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
  EXPECT_EQ(bench_.trace, std::string("close WinSock\r\n") + kListenTrace);
  EXPECT_EQ(CurrentState(), State::kIdle);
  bench_.socket.Connect();
  Arrive(kInitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply});
}

TEST_F(TcpPathTest, TheReplyOfACommandWhoseClientWasReplacedReachesNobody) {
  AttachWaiting(CommandCode::kGetParameter, [&] { bench_.socket.Connect(); });
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
  EXPECT_EQ(CurrentState(), State::kFileSelected);
  Arrive(kSwitchRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
}

TEST_F(TcpPathTest, TheReplyOfACommandWhoseClientLeftAndWasSucceededReachesNobody) {
  AttachWaiting(CommandCode::kGetParameter, [&] {
    bench_.socket.Leave();
    bench_.socket.Connect();
  });
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
  Arrive(kInitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply});
}

TEST_F(TcpPathTest, ASuccessorsFrameDuringItsPredecessorsCommandIsAnsweredWhenThatHasEnded) {
  AttachWaiting(CommandCode::kGetParameter, [&] {
    bench_.socket.Connect();
    bench_.Forget();
    Arrive(kSwitchRequest);
    EXPECT_EQ(bench_.trace, "") << "never two commands at a time";
  });
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
  EXPECT_EQ(bench_.trace, "switching offline/online(1)\r\n");
}

TEST_F(TcpPathTest, ASuccessorsLongFrameMayBeginDuringItsPredecessorsCommand) {
  const ByteBuffer frame = Request(4, std::string(4000, '7'));
  AttachWaiting(CommandCode::kGetParameter, [&] {
    bench_.socket.Connect();
    bench_.socket.Arrive(ByteBuffer(frame.View(0, 1448)));
  });
  Arrive(WaitingRequest());
  bench_.socket.Arrive(ByteBuffer(frame.View(1448, frame.Length() - 1448)));
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{"0008000456565662"});
}

TEST_F(TcpPathTest, ManyClientsThatReplaceOneAnotherDoNotNest) {
  int depth = 0;
  int deepest = 0;
  int commands = 0;
  AttachWaiting(CommandCode::kGetParameter, [&] {
    deepest = std::max(deepest, ++depth);
    if (++commands < 1000) {
      bench_.socket.Connect();
      Arrive(WaitingRequest());
    }
    --depth;
  });
  Arrive(WaitingRequest());
  EXPECT_EQ(commands, 1000);
  EXPECT_EQ(deepest, 1);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kWaitingReply});
}

// A command that waits for the signal, and holds something for as long as it is under way.
base::Task<std::int32_t> WaitFor(base::Signal& signal, std::shared_ptr<int>) {
  co_await signal.Next();
  co_return 0;
}

class WaitingCommandTest : public TcpPathTest {
 protected:
  WaitingCommandTest() {
    bench_.server->dispatcher.Attach(CommandCode::kGetParameter, [this](base::ByteView, ByteBuffer&) {
      return WaitFor(answered_, held_);
    });
    bench_.server->state.Set(State::kFileSelected);
  }
  bool IsUnderWay() const { return held_.use_count() > 2; }
  void AnswerAll() {
    bench_.loop.At(std::chrono::milliseconds(1), [this] { answered_.Raise(); });
    bench_.loop.Advance(std::chrono::milliseconds(1));
  }

  std::shared_ptr<base::EventLoop> loop_{&bench_.loop, [](base::EventLoop*) {}};
  base::Signal answered_{loop_};
  std::shared_ptr<int> held_ = std::make_shared<int>();
};

TEST_F(WaitingCommandTest, IsCalledOffWhenItsClientIsReplacedOrLeaves) {
  const std::shared_ptr<int> also_held = held_;
  const std::function<void()> departures[] = {
      [&] { bench_.socket.Connect(); }, [&] { bench_.socket.Leave(); }, [&] { bench_.server->tcp.Close(); }};
  for (const auto& depart : departures) {
    bench_.server->state.Set(State::kFileSelected);
    bench_.socket.Connect();
    Arrive(WaitingRequest());
    EXPECT_TRUE(IsUnderWay());
    depart();
    EXPECT_FALSE(IsUnderWay());
    AnswerAll();
    EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
  }
}

TEST_F(WaitingCommandTest, OfAClientThatIsReplacedHoldsUpNobody) {
  Arrive(WaitingRequest());
  bench_.socket.Connect();
  Arrive(kSwitchRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kSwitchReply});
}

TEST_F(WaitingCommandTest, GoesOnWhenItsClientSendsASecondFrame) {
  const std::shared_ptr<int> also_held = held_;
  Arrive(WaitingRequest());
  Arrive(kSwitchRequest);
  EXPECT_TRUE(IsUnderWay());
  AnswerAll();
  EXPECT_FALSE(IsUnderWay());
  EXPECT_EQ(bench_.socket.TakeSent().size(), 1U) << "the canned frame alone";
}

TEST_F(TcpPathTest, ASessionThatEndedWhileItsInitWaitedIsIdle) {
  bench_.services.create = [&](ByteBuffer&) {
    bench_.socket.Leave();
    return false;
  };
  Arrive(kInitRequest);
  EXPECT_EQ(CurrentState(), State::kIdle);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
}

TEST_F(TcpPathTest, ClosingInsideACommandSilencesIt) {
  AttachWaiting(CommandCode::kGetParameter, [&] { bench_.server->tcp.Close(); });
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
  EXPECT_FALSE(bench_.socket.IsListening());
}

TEST_F(TcpPathTest, ClosingAndListeningAgainInsideACommandSilencesItAndServesTheNextClient) {
  AttachWaiting(CommandCode::kGetParameter, [&] {
    bench_.server->tcp.Close();
    bench_.server->tcp.StartListening();
    bench_.socket.Connect();
  });
  Arrive(WaitingRequest());
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{});
  Arrive(kInitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply});
}

TEST_F(TcpPathTest, TheServerMayBeLetGoInsideACommand) {
  std::weak_ptr<tests::ProtocolBench::Server> watcher = bench_.server;
  AttachWaiting(CommandCode::kGetParameter, [&] { bench_.server.reset(); });
  Arrive(WaitingRequest());
  EXPECT_TRUE(watcher.expired());
  bench_.Forget();
  Arrive(kInitRequest);
  bench_.socket.Leave();
  EXPECT_TRUE(bench_.trace.empty());
}

TEST_F(TcpPathTest, AnyTwoBytesAndAnyShortFrameIsAnsweredOrRefusedAndTheNextGoodOneIsServed) {
  for (unsigned first = 0; first < 256; ++first) {
    for (unsigned second = 0; second < 256; second += 5) {
      ByteBuffer bytes{0x00, 0x08, static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(second),
                       0x00, 0x01};
      bench_.socket.Arrive(bytes);
      Pause();
      bytes.Append(ByteBuffer{0x00, static_cast<std::uint8_t>(first)}.View());
      bench_.socket.Arrive(bytes);
      Pause();
    }
  }
  bench_.socket.TakeSent();
  Arrive(kInitRequest);
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{kInitReply});
}

}  // namespace
}  // namespace korval::protocol
