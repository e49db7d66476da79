// SPDX-License-Identifier: MIT
// A host application built on the installed library, as a process of its own.
#include <bit>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/TempFolder.h"
#include "tests/system/Frames.h"
#include "tests/system/FreePort.h"
#include "tests/system/RawClient.h"
#include "tests/system/ServerProcess.h"

namespace korval::tests {
namespace {

class HostFormTest : public ::testing::Test {
 protected:
  HostFormTest() {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const std::string folder = KORVAL_HOST_FILES;
    std::filesystem::create_directories(folder_.Path("Korval"));
    folder_.Write("Korval/Korval.ini", "[KorvalAsapServer]\nProperties\\tcpipPort=" + std::to_string(port_) +
                                           "\nProperties\\AsapFolder=" + folder + "/asap" +
                                           "\nProperties\\KorvFolder=" + folder + "/ecu\n");
    server_.emplace(std::vector<std::string>(), folder_.Path());
    WaitForListener(port_);
  }

  // A whole session of one client, up to the temperature.
  void ExpectTemperature() const {
    const RawClient client(port_);
    EXPECT_EQ(StatusOf(client.Ask(Request(kInit))), kSuccess);
    EXPECT_EQ(StatusOf(client.Ask(Request(kIdentify, Word(0x0201) + Text("Bench")))), kSuccess);
    EXPECT_EQ(StatusOf(client.Ask(Request(kSelectFile, Text("room.xml") + Text("ROOM") + Word(0)))),
              kSuccess);
    const std::string reply = client.Ask(Request(kGetParameter, Word(1) + Text("T")));
    ASSERT_EQ(StatusOf(reply), kSuccess) << ErrorTextOf(reply);
    const float temperature = std::bit_cast<float>(std::uint32_t{WordAt(reply, 6)} << 16 | WordAt(reply, 8));
    EXPECT_GE(temperature, 15);
    EXPECT_LE(temperature, 25);
    EXPECT_EQ(StatusOf(client.Ask(Request(kExit))), kSuccess);
  }

  TempFolder folder_;
  int port_ = FreePort();
  std::optional<ServerProcess> server_;
};

TEST_F(HostFormTest, EveryClientIsServedByTheHostsOwnSession) {
  ExpectTemperature();
  ExpectTemperature();
  EXPECT_TRUE(server_->StandardError().find("rror") == std::string::npos) << server_->StandardError();
}

}  // namespace
}  // namespace korval::tests
