// SPDX-License-Identifier: MIT
// Frames, clients and replies as a network brings them.
#include <memory>

#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

/// A harmless request of that many bytes.
std::string LongRequest(std::size_t size) {
  return Request(kSwitching, Word(1) + std::string(size - 8, 'x'));
}

class NetworkTest : public ServerBench {};

TEST_F(NetworkTest, EveryFrameOverAPacedWireIsAnswered) {
  Start();
  auto client = std::make_unique<RawClient>(port_);
  const std::size_t sizes[] = {8, 1448, 1450, 2012, 4000, 8012, 2012, 20000};
  int held_up = 0;
  for (std::size_t answered = 0; answered < 1000;) {
    const std::size_t size = answered % 100 == 99 ? 65534 : sizes[answered % std::size(sizes)];
    if (!client->SendPaced(LongRequest(size))) {
      ASSERT_LT(++held_up, 1000) << "this computer is too busy to play a wire";
      client = std::make_unique<RawClient>(port_);
      continue;
    }
    ASSERT_EQ(Hex(client->Receive()), Hex(Reply(kSwitching, kSuccess)))
        << size << " bytes, frame " << answered;
    ++answered;
  }
}

TEST_F(NetworkTest, ALongFrameDuringACommandGetsTheGlobalErrorOnce) {
  WritePair(
      "slow",
      EcuFile("Name=\"SLOW\" Protocol=\"DiagOnCAN\" P2Ms=\"60000\"", kEngineRequests, kEngineAnswers, 400),
      kEngineData);
  Start({"--debug"});
  const RawClient client = Connect();
  OpenPair(client, "slow");
  client.Send(GetRequest(1, "N"));
  server_->WaitFor("Byte received : " + Hex(GetRequest(1, "N")));
  client.SendPaced(LongRequest(20000));
  EXPECT_EQ(Hex(client.Receive()), Hex(kGlobalError));
  server_->WaitFor("get parameter(1,N) ok");
  EXPECT_EQ(Hex(client.Ask(Request(4))), Hex(Reply(kSwitching, kSuccess)))
      << "of the long one, which was held";
  EXPECT_EQ(Hex(client.Ask(Request(5))), Hex(Reply(5, kUnknownCommand)));
}

TEST_F(NetworkTest, AClientThatConnectsWhenAnotherHasLeftFindsNothingOfIts) {
  Start();
  for (int round = 0; round < 80; ++round) {
    RawClient first = Connect();
    OpenEngine(first);
    if (round % 2 == 0) {
      first.Close();
    } else {
      first.Abort();
    }
    const RawClient second = Connect();
    ASSERT_EQ(StatusOf(second.Ask(GetRequest(1, "N"))), kNotProcessed) << round;
  }
}

TEST_F(NetworkTest, TheLastFrameOfAClientIsServedAndDiesWithIt) {
  Start();
  for (int round = 0; round < 20; ++round) {
    RawClient first = Connect();
    Identify(first);
    first.Send(SelectRequest("engine.xml", "ENGINE_MAP"));
    first.Close();
    const RawClient second = Connect();
    ASSERT_EQ(StatusOf(second.Ask(GetRequest(1, "N"))), kNotProcessed) << round;
    server_->WaitFor("select file(engine.xml,ENGINE_MAP,0)");
  }
}

}  // namespace
}  // namespace korval::tests
