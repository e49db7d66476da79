// SPDX-License-Identifier: MIT
// The server with a window as a process of its own, its window drawn into memory.
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <thread>

#include "tests/system/FreePort.h"
#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr int kForever = 50000;

class WindowedServerTest : public ServerBench {
 protected:
  WindowedServerTest() {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
  }

  std::vector<std::string> WindowOptions() const {
    std::vector<std::string> options = SafeOptions();
    std::erase(options, "--headless");
    return options;
  }
  void StartWindow(const std::vector<std::string>& more_options) {
    port_ = FreePort();
    std::vector<std::string> options = WindowOptions();
    options.insert(options.end(), {"--tcp-port", std::to_string(port_)});
    options.insert(options.end(), more_options.begin(), more_options.end());
    server_.emplace(options, folder_.Path("home"));
    WaitForListener(port_);
  }
  void StartOnBench() {
    StartWindow({"--diag-port", "SIM", "--asap-folder", folder_.Path("asap"), "--korv-folder",
                 folder_.Path("korv"), "--debug"});
  }
  // What was sent is either in the queue of the server's end of the connection, or the server has read it.
  void WaitUntilRead() const {
    std::ostringstream port;
    port << ':' << std::uppercase << std::hex << std::setw(4) << std::setfill('0') << port_;
    for (bool unread = true; unread; std::this_thread::yield()) {
      unread = false;
      std::ifstream connections("/proc/net/tcp");
      for (std::string line; std::getline(connections, line);) {
        std::istringstream fields(line);
        std::string number;
        std::string local;
        std::string remote;
        std::string state;
        std::string queues;
        fields >> number >> local >> remote >> state >> queues;
        const bool is_ours = local.ends_with(port.str()) && state == "01";
        unread = unread || (is_ours && !queues.ends_with(":00000000"));
      }
    }
  }
  std::string Settings() const {
    std::ifstream file(folder_.Path("settings.ini"));
    return {std::istreambuf_iterator<char>(file), {}};
  }
};

TEST_F(WindowedServerTest, AWholeSessionIsAnsweredAndTheWindowClosesInOrder) {
  StartOnBench();
  {
    const RawClient client = Connect();
    ExpectGoodSession(client);
  }
  StopInOrder();
  EXPECT_TRUE(server_->RemainingTrace().empty()) << "the trace belongs into the window";
}

TEST_F(WindowedServerTest, ClosingTheWindowInsideAWaitEndsTheServerInOrder) {
  WritePair("slow",
            EcuFile("Name=\"SLOW\" Protocol=\"DiagOnCAN\" P2Ms=\"60000\"", kEngineRequests, kEngineAnswers,
                    kForever),
            kEngineData);
  StartOnBench();
  const RawClient client = Connect();
  OpenPair(client, "slow");
  client.Send(GetRequest(1, "N"));
  WaitUntilRead();
  EXPECT_EQ(Hex(client.Ask(HarmlessRequest())), Hex(kGlobalError)) << "the command waits";
  StopInOrder();
}

TEST_F(WindowedServerTest, TheFirstStartHasTheExamplesAndTheSimulatedEcu) {
  StartWindow({});
  const RawClient client = Connect();
  Identify(client);
  EXPECT_EQ(Select(client, "engine.xml", "ENGINE"), 1U);
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(1, "Speed"))), kSuccess);
  StopInOrder();
  EXPECT_THAT(Settings(), HasSubstr("General\\CommPort=SIM"));
  EXPECT_THAT(Settings(), Not(HasSubstr("AsapFolder")));
}

TEST_F(WindowedServerTest, StoredFoldersStandBeforeTheExamples) {
  folder_.Write("settings.ini", "[KorvalAsapServer]\nProperties\\AsapFolder=" + folder_.Path("asap") +
                                    "\nProperties\\KorvFolder=" + folder_.Path("korv") +
                                    "\n[QOR]\nGeneral\\CommPort=SIM\n");
  StartWindow({});
  const RawClient client = Connect();
  OpenEngine(client);
  StopInOrder();
}

TEST_F(WindowedServerTest, ItRemembersWhereItStood) {
  StartOnBench();
  StopInOrder();
  EXPECT_THAT(Settings(), HasSubstr("View\\Window="));
}

TEST_F(WindowedServerTest, WithoutADisplayASentenceSaysWhatToDo) {
  ::unsetenv("QT_QPA_PLATFORM");
  ServerProcess server(WindowOptions(), folder_.Path("home"));
  EXPECT_EQ(server.WaitForExit(), 1);
  EXPECT_THAT(server.StandardError(), HasSubstr("no window can be opened"));
  EXPECT_THAT(server.StandardError(), HasSubstr("--headless"));
}

TEST_F(WindowedServerTest, WithoutTheWindowsLibraryASentenceSaysWhatToDo) {
  const std::string alone = folder_.Path("korval-asap-server");
  std::filesystem::copy_file(KORVAL_ASAP_SERVER, alone);
  ServerProcess server(WindowOptions(), folder_.Path("home"), alone);
  EXPECT_EQ(server.WaitForExit(), 1);
  EXPECT_THAT(server.StandardError(), HasSubstr("no window can be opened"));
  EXPECT_THAT(server.StandardError(), HasSubstr("korval-asap-server-window.so"));
  EXPECT_THAT(server.StandardError(), HasSubstr("--headless"));
}

TEST_F(WindowedServerTest, APortInUseLeavesTheWindowOpenAndTheStatusTellsOfIt) {
  StartOnBench();
  std::vector<std::string> options = WindowOptions();
  options.insert(options.end(), {"--tcp-port", std::to_string(port_)});
  ServerProcess other(options, folder_.Path("home"));
  WaitUntil([&] { return other.StandardError().find("TCP port") != std::string::npos; });
  EXPECT_EQ(other.Stop(SIGTERM), 1);
  StopInOrder();
}

}  // namespace
}  // namespace korval::tests
