// SPDX-License-Identifier: MIT
#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "protocol/FieldCodec.h"
#include "protocol/PowerRequest.h"
#include "tests/support/ProtocolBench.h"

namespace korval::protocol {
namespace {

using base::ByteBuffer;
using State = SessionState::State;
using Replies = std::vector<std::string>;
using tests::Request;

constexpr const char* kDoneReply = "000800730000007B";
constexpr const char* kRebootTrace = "trace Remote reboot asked ...\r\n";
constexpr const char* kShutdownTrace = "trace Remote Shutdown asked ...\r\n";
constexpr const char* kReboot = "ExitWindows 6";
constexpr const char* kShutdown = "ExitWindows 5";

class PowerRequestTest : public ::testing::Test {
 protected:
  void SetUp() override {
    bench_.ConnectClient();
    bench_.port.Open();
    bench_.services.has_diagnosis_object = true;
    Ask(PowerRequest::kReboot);
    bench_.Forget();
  }

  /// Lets extended set parameter ask for `request` and then wait while `meanwhile` happens.
  void Ask(
      PowerRequest request, const std::function<void()>& meanwhile = [] {}) {
    bench_.server->dispatcher.Attach(CommandCode::kExtendedSetParameter,
                                     [this, request, meanwhile](base::ByteView, ByteBuffer&) {
                                       bench_.server->runner.PendingPowerRequest() = request;
                                       meanwhile();
                                       return 0;
                                     });
    bench_.server->state.Set(State::kFileSelected);
  }
  void RunOverTcp() { bench_.socket.Arrive(Request(115)); }
  void RunOverSerial() { bench_.port.Arrive(Request(115)); }
  /// The entries appear in the log, in this order.
  void ExpectInOrder(const std::vector<std::string>& entries) {
    std::size_t last = 0;
    for (const std::string& entry : entries) {
      ASSERT_TRUE(bench_.Logged(entry)) << entry;
      EXPECT_GE(bench_.LogIndex(entry), last) << entry;
      last = bench_.LogIndex(entry);
    }
  }
  bool Acted() const { return bench_.Logged(kReboot) || bench_.Logged(kShutdown); }

  tests::ProtocolBench bench_;
};

TEST_F(PowerRequestTest, HasTheNumbersOfTheProtocol) {
  EXPECT_EQ(static_cast<int>(PowerRequest::kNone), 0);
  EXPECT_EQ(static_cast<int>(PowerRequest::kReboot), 1);
  EXPECT_EQ(static_cast<int>(PowerRequest::kShutdown), 2);
}

TEST_F(PowerRequestTest, OverTcpTheReplyComesFirstThenTheReleaseTheTraceAndTheAct) {
  RunOverTcp();
  ExpectInOrder({std::string("send ") + kDoneReply, "ReleaseForPowerRequest, not a host session",
                 kRebootTrace, kReboot});
}

TEST_F(PowerRequestTest, AShutdownRequestShutsDown) {
  Ask(PowerRequest::kShutdown);
  RunOverTcp();
  ExpectInOrder({std::string("send ") + kDoneReply, "ReleaseForPowerRequest, not a host session",
                 kShutdownTrace, kShutdown});
  EXPECT_FALSE(bench_.Logged(kRebootTrace));
}

TEST_F(PowerRequestTest, OverSerialTheHostsOwnSessionIsClosedToo) {
  RunOverSerial();
  ExpectInOrder({std::string("write ") + kDoneReply, "ReleaseForPowerRequest, host session too", kRebootTrace,
                 kReboot});
  EXPECT_FALSE(bench_.Logged("ReleaseForPowerRequest, not a host session"));
}

TEST_F(PowerRequestTest, WithADiagnosisObjectTheClientIsDroppedAndTheServerListensAgainIdle) {
  for (const bool over_tcp : {true, false}) {
    bench_.services.has_diagnosis_object = true;
    if (!bench_.socket.HasClient()) bench_.socket.Connect();
    Ask(PowerRequest::kReboot);
    over_tcp ? RunOverTcp() : RunOverSerial();
    EXPECT_FALSE(bench_.socket.HasClient());
    EXPECT_TRUE(bench_.Logged("listen"));
    EXPECT_EQ(bench_.server->state.Current(), State::kIdle);
    bench_.Forget();
    bench_.socket.TakeSent();
    bench_.socket.Connect();
    bench_.socket.Arrive(ByteBuffer::FromHex("000600020008"));
    EXPECT_EQ(bench_.socket.TakeSent(), Replies{"000800020000000A"});
  }
}

TEST_F(PowerRequestTest, WithoutADiagnosisObjectTheClientStays) {
  bench_.services.has_diagnosis_object = false;
  RunOverTcp();
  ExpectInOrder({std::string("send ") + kDoneReply, kRebootTrace, kReboot});
  EXPECT_TRUE(bench_.socket.HasClient());
}

TEST_F(PowerRequestTest, TheSocketIsClosedBeforeTheTraceAndTheAct) {
  RunOverTcp();
  const std::size_t dropped = std::min(bench_.LogIndex("close tcp"), bench_.LogIndex("disconnect"));
  EXPECT_LT(dropped, bench_.LogIndex(kRebootTrace));
  EXPECT_LT(bench_.LogIndex(kRebootTrace), bench_.LogIndex(kReboot));
}

TEST_F(PowerRequestTest, ARequestIsActedOnOnce) {
  for (const bool over_tcp : {true, false}) {
    Ask(PowerRequest::kShutdown);
    if (!bench_.socket.HasClient()) bench_.socket.Connect();
    over_tcp ? RunOverTcp() : RunOverSerial();
    EXPECT_TRUE(Acted());
    EXPECT_EQ(bench_.server->runner.PendingPowerRequest(), PowerRequest::kNone);
    bench_.Forget();
    if (!bench_.socket.HasClient()) bench_.socket.Connect();
    bench_.socket.Arrive(ByteBuffer::FromHex("000600020008"));
    bench_.port.Arrive(ByteBuffer::FromHex("000600020008"));
    EXPECT_FALSE(Acted());
  }
}

TEST_F(PowerRequestTest, ACommandWithoutRequestActsOnNothing) {
  Ask(PowerRequest::kNone);
  RunOverTcp();
  RunOverSerial();
  EXPECT_FALSE(Acted());
  EXPECT_EQ(bench_.trace, "");
}

TEST_F(PowerRequestTest, ARefusalOfTheSystemIsShownAndTheServerGoesOn) {
  bench_.power.failure = "not allowed";
  RunOverTcp();
  EXPECT_TRUE(bench_.Logged("box PcShutdown error : not allowed"));
  EXPECT_EQ(bench_.server->runner.PendingPowerRequest(), PowerRequest::kNone);
  bench_.socket.TakeSent();
  bench_.socket.Connect();
  bench_.socket.Arrive(ByteBuffer::FromHex("000600020008"));
  EXPECT_EQ(bench_.socket.TakeSent(), Replies{"000800020000000A"});
}

TEST_F(PowerRequestTest, ARequestWhoseReplyWasSuppressedIsDroppedAndSaysSo) {
  Ask(PowerRequest::kReboot, [&] { bench_.socket.Arrive(ByteBuffer::FromHex("000600020008")); });
  RunOverTcp();
  EXPECT_FALSE(Acted());
  EXPECT_FALSE(bench_.Logged(kRebootTrace));
  EXPECT_EQ(bench_.server->runner.PendingPowerRequest(), PowerRequest::kNone);
  const std::string busy = "Error : Command in progress, wait end of last command before send a command \r\n";
  ASSERT_EQ(bench_.trace.rfind(busy, 0), 0U);
  EXPECT_GT(bench_.trace.size(), busy.size()) << "the drop is traced";
  bench_.Forget();
  Ask(PowerRequest::kNone);
  RunOverTcp();
  RunOverTcp();
  RunOverSerial();
  EXPECT_FALSE(Acted());
}

TEST_F(PowerRequestTest, ARequestWhoseClientLeftOrWasReplacedIsDropped) {
  for (const bool leaves : {true, false}) {
    Ask(PowerRequest::kShutdown, [&] { leaves ? bench_.socket.Leave() : void(bench_.socket.Connect()); });
    bench_.Forget();
    RunOverTcp();
    EXPECT_FALSE(Acted());
    EXPECT_EQ(bench_.server->runner.PendingPowerRequest(), PowerRequest::kNone);
    bench_.socket.Connect();
  }
}

TEST_F(PowerRequestTest, ARequestLeftByASilencedCommandIsNotCarriedOutByTheSerialLine) {
  Ask(PowerRequest::kReboot, [&] { bench_.socket.Leave(); });
  RunOverTcp();
  bench_.Forget();
  bench_.port.Arrive(ByteBuffer::FromHex("000600020008"));
  EXPECT_FALSE(Acted());
}

}  // namespace
}  // namespace korval::protocol
