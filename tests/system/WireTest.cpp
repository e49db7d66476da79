// SPDX-License-Identifier: MIT
// A server and a client at the two ends of a wire of 10 Mbit/s.
#include <memory>

#include "tests/system/NetworkNamespaces.h"
#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

class WireTest : public ServerBench {
 protected:
  void SetUp() override {
    if (!wire_.AreAllowed())
      GTEST_SKIP() << "network namespaces are refused here, run as root where they are allowed";
  }

  /// The name V1, V2... of as many values.
  static std::vector<std::string> ManyNames(int count) {
    std::vector<std::string> names;
    for (int number = 1; number <= count; ++number) names.push_back("V" + std::to_string(number));
    return names;
  }

  void StartAtItsEnd(const std::vector<std::string>& more_options = {}) {
    DataNames data;
    for (const std::string& name : ManyNames(250)) data.emplace_back("EngineSpeed", name);
    WritePair("many", EcuFile("Name=\"MANY\"", kEngineRequests, kEngineAnswers), data);
    std::vector<std::string> command = {"netns", "exec", wire_.Server(), KORVAL_ASAP_SERVER};
    for (const std::string& option : StartOptions(more_options))
      command.push_back(option == "127.0.0.1" ? NetworkNamespaces::kServerAddress : option);
    server_.emplace(command, folder_.Path("home"), KORVAL_IP);
    port_ = server_->WaitForPort();
  }
  std::unique_ptr<RawClient> ConnectOverTheWire() const {
    std::unique_ptr<RawClient> client;
    wire_.InClient([&] {
      client = std::make_unique<RawClient>(NetworkNamespaces::kClientAddress, port_,
                                           NetworkNamespaces::kServerAddress);
    });
    return client;
  }

  NetworkNamespaces wire_;
};

TEST_F(WireTest, EveryFrameIsAnswered) {
  StartAtItsEnd();
  const auto client = ConnectOverTheWire();
  const std::size_t sizes[] = {8, 1448, 1450, 2012, 4000, 8012, 2012, 20000};
  for (std::size_t count = 0; count < 1000; ++count) {
    const std::size_t size = count % 100 == 99 ? 65534 : sizes[count % std::size(sizes)];
    client->Send(Request(kSwitching, Word(1) + std::string(size - 8, 'x')));
    ASSERT_EQ(Hex(client->Receive()), Hex(Reply(kSwitching, kSuccess))) << size << " bytes, frame " << count;
  }
}

TEST_F(WireTest, TheClientProgramWatches250Values) {
  StartAtItsEnd();
  std::vector<std::string> command = {"netns",
                                      "exec",
                                      wire_.Client(),
                                      KORVAL_ASAP3,
                                      "--host",
                                      NetworkNamespaces::kServerAddress,
                                      "--port",
                                      std::to_string(port_),
                                      "--file",
                                      "many.xml",
                                      "--section",
                                      "MAP",
                                      "watch",
                                      "--count",
                                      "3"};
  for (const std::string& name : ManyNames(250)) command.push_back(name);
  ServerProcess client(command, folder_.Path("client-home"), KORVAL_IP);
  EXPECT_EQ(client.WaitForExit(), 0) << client.StandardError();
}

TEST_F(WireTest, OnlyANamedClientOnAnotherComputerSwitchesThisOneOff) {
  StartAtItsEnd();
  {
    const auto client = ConnectOverTheWire();
    OpenEngine(*client);
    EXPECT_EQ(Hex(client->Ask(ExtendedSetRequest(1, "pcreboot", "1"))), Hex(Reply(kExtendedSet, kSuccess)));
    EXPECT_THAT(
        server_->WaitFor("Remote "),
        ::testing::StartsWith("Remote reboot refused: 10.77.0.2 is neither this machine nor an allowed"));
    EXPECT_EQ(StatusOf(client->Ask(GetRequest(1, "N"))), kSuccess) << "the session goes on";
  }
  StopInOrder();

  StartAtItsEnd({"--allow", NetworkNamespaces::kClientAddress});
  const auto client = ConnectOverTheWire();
  OpenEngine(*client);
  EXPECT_EQ(Hex(client->Ask(ExtendedSetRequest(1, "pcshutdown", "1"))), Hex(Reply(kExtendedSet, kSuccess)));
  EXPECT_EQ(server_->WaitFor("Remote "), "Remote Shutdown asked ...");
}

TEST_F(WireTest, ACutWireIsADisconnect) {
  StartAtItsEnd();
  const auto client = ConnectOverTheWire();
  OpenEngine(*client);
  wire_.CutTheWire();
  server_->WaitFor("close WinSock");
  EXPECT_EQ(server_->WaitForPort(), port_);
}

}  // namespace
}  // namespace korval::tests
