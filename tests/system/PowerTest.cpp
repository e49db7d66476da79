// SPDX-License-Identifier: MIT
// Remote reboot and shutdown, with a power service that only says what it would do.
#include <ostream>

#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

struct PowerCommand {
  const char* name;
  const char* trace;
};

void PrintTo(const PowerCommand& command, std::ostream* stream) { *stream << command.name; }

class PowerTest : public ServerBench, public ::testing::WithParamInterface<PowerCommand> {};

TEST_P(PowerTest, TheReplyComesFirstThenTheActAndTheServerStaysReachable) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  server_->WaitFor(folder_.Path("korv/engine_ecu.xml"));
  EXPECT_EQ(Hex(client.Ask(ExtendedSetRequest(1, GetParam().name, "1"))), Hex(Reply(kExtendedSet, kSuccess)));
  EXPECT_TRUE(client.EndedByServer());
  server_->WaitFor(GetParam().trace);

  const RawClient next = Connect();
  EXPECT_EQ(StatusOf(next.Ask(Request(kIdentify, Word(0x0201) + Text("Bench")))), kNotProcessed);
  EXPECT_EQ(StatusOf(next.Ask(GetRequest(1, "N"))), kNotProcessed);
  ExpectGoodSession(next);
  StopInOrder();
}

TEST_P(PowerTest, TheRequestIsCarriedOutOnce) {
  Start();
  {
    const RawClient client = Connect();
    OpenEngine(client);
    Succeed(client, ExtendedSetRequest(1, GetParam().name, ""));
    EXPECT_TRUE(client.EndedByServer());
  }
  server_->WaitFor(GetParam().trace);
  RawClient next = Connect();
  OpenEngine(next);
  Succeed(next, SetRequest(1, "IDLE", 850));
  Succeed(next, Request(kExit));
  EXPECT_THAT(server_->TraceUntil("exit()"),
              ::testing::Not(::testing::Contains(::testing::StartsWith("Remote "))));
}

TEST_P(PowerTest, TheReplyIsTracedBeforeTheAct) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  const std::string request = ExtendedSetRequest(1, GetParam().name, "1");
  client.Send(request);
  server_->WaitFor("Byte received : " + Hex(request));
  const Lines lines = server_->TraceUntil(GetParam().trace);
  EXPECT_THAT(lines, ::testing::Contains("Byte send : 000800730000007B"));
  EXPECT_EQ(lines.back(), GetParam().trace);
}

TEST_P(PowerTest, OnlyTheStringFormIsARequest) {
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  const std::string name = Word(1) + Text(GetParam().name);
  for (const std::string& value : {Word(0) + Real(1), Word(1) + Real8(1)}) {
    const std::string reply = client.Ask(Request(kExtendedSet, name + value));
    EXPECT_EQ(StatusOf(reply), kError);
    EXPECT_EQ(ErrorNumberOf(reply), 10012U);
  }
  EXPECT_EQ(StatusOf(client.Ask(ExtendedSetRequest(9, GetParam().name, "1"))), kError);
  client.Ask(HarmlessRequest());
  EXPECT_THAT(server_->TraceUntil("switching"),
              ::testing::Not(::testing::Contains(::testing::StartsWith("Remote "))));
}

TEST_P(PowerTest, ARefusedRequestIsNotCarriedOutLater) {
  Start();
  const RawClient client = Connect();
  Identify(client);
  EXPECT_EQ(StatusOf(client.Ask(ExtendedSetRequest(1, GetParam().name, "1"))), kNotProcessed);
  EXPECT_EQ(Select(client, "engine.xml", "ENGINE_MAP"), 1U);
  client.Ask(HarmlessRequest());
  EXPECT_THAT(server_->TraceUntil("switching"),
              ::testing::Not(::testing::Contains(::testing::StartsWith("Remote "))));
}

INSTANTIATE_TEST_SUITE_P(Names, PowerTest,
                         ::testing::Values(PowerCommand{"pcreboot", "Remote reboot asked ..."},
                                           PowerCommand{"pcshutdown", "Remote Shutdown asked ..."}),
                         [](const auto& command) { return std::string(command.param.name); });

}  // namespace
}  // namespace korval::tests
