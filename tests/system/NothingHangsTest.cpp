// SPDX-License-Identifier: MIT
// What hangs around the server - locks, readers, pipes, devices, people at the keyboard - never hangs the
// server.
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/stat.h>

#include "tests/system/SerialLine.h"
#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class NothingHangsTest : public ServerBench {
 protected:
  /// Options with which the server chooses the port of the vehicle itself, and stores its choice.
  std::vector<std::string> OptionsThatStore() const {
    std::vector<std::string> options = SafeOptions();
    for (const std::string& option :
         {std::string("--tcp-port"), std::string("0"), std::string("--asap-folder"), folder_.Path("asap"),
          std::string("--korv-folder"), folder_.Path("korv")})
      options.push_back(option);
    return options;
  }
  /// More trace than any pipe holds, and than the server keeps.
  static void CauseTrace(const RawClient& client, int megabytes) {
    const std::string name(8000, 'n');  // some 32 kB of trace, most of it hexadecimal
    for (int i = 0; i < 30 * megabytes; ++i) {
      EXPECT_EQ(StatusOf(client.Ask(GetRequest(1, name + std::to_string(i)))), kError);
    }
  }
  /// Runs the server from a shell, with its standard output as in `redirection`, to its end.
  int RunWithOutput(const std::string& redirection) {
    std::vector<std::string> command{"-c", "set -o pipefail; \"$0\" \"$@\" " + redirection,
                                     KORVAL_ASAP_SERVER};
    for (const std::string& option : OptionsThatStore()) command.push_back(option);
    server_.emplace(command, folder_.Path("home"), "/bin/bash");
    return server_->WaitForExit();
  }
  std::string StoredSettings() const {
    std::ifstream file(folder_.Path("settings.ini"));
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
  }
};

TEST_F(NothingHangsTest, ALockOfTheSettingsThatWasLeftOverIsReportedAndTheServerRuns) {
  for (const std::string lock : {"", "4711\nkorval-asap-server\nanother-computer\n\n\n"}) {
    SCOPED_TRACE(lock);
    folder_.Write("settings.ini.lock", lock);
    folder_.Write("install.ini.lock", lock);
    server_.emplace(OptionsThatStore(), folder_.Path("home"));
    port_ = server_->WaitForPort();
    ExpectGoodSession(Connect());
    StopInOrder();
    EXPECT_THAT(server_->StandardError(),
                AllOf(HasSubstr("settings.ini is locked"), HasSubstr("settings.ini.lock")));
    EXPECT_EQ(StoredSettings(), "");
  }
}

TEST_F(NothingHangsTest, AReaderOfTheTraceThatPausesHoldsNobodyUp) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  server_->PauseReading();
  CauseTrace(client, 10);
  ExpectGoodSession(client);
  server_->ResumeReading();
  EXPECT_THAT(server_->WaitFor("("), HasSubstr(" lines dropped: nobody has read them in time)"));
  EXPECT_EQ(StatusOf(client.Ask(HarmlessRequest())), kSuccess);
  server_->WaitFor("switching");
  StopInOrder();
}

TEST_F(NothingHangsTest, TheEndDoesNotWaitForAReaderThatHasPaused) {
  Start({"--debug"});
  const RawClient client = Connect();
  OpenEngine(client);
  server_->PauseReading();
  CauseTrace(client, 1);
  server_->Signal(SIGTERM);
  server_->WaitUntilItHasEnded();
  server_->ResumeReading();
  EXPECT_EQ(server_->WaitForExit(), 0);
}

TEST_F(NothingHangsTest, AnOutputThatIsFullOrClosedEndsTheServerWithASentence) {
  for (const std::string output : {">/dev/full", ">&-"}) {
    SCOPED_TRACE(output);
    EXPECT_EQ(RunWithOutput(output), 4);
    EXPECT_THAT(server_->StandardError(), HasSubstr("cannot be written to standard output"));
  }
}

TEST_F(NothingHangsTest, HelpThatCannotBePrintedIsStatus4) {
  server_.emplace(std::vector<std::string>{"-c", "\"$0\" --help >/dev/full", KORVAL_ASAP_SERVER},
                  folder_.Path("home"), "/bin/bash");
  EXPECT_EQ(server_->WaitForExit(), 4);
  EXPECT_THAT(server_->StandardError(), HasSubstr("No space left on device"));
}

TEST_F(NothingHangsTest, AReaderOfTheTraceThatGoesEndsTheServerQuietly) {
  EXPECT_EQ(RunWithOutput("| head -n 1"), 4);
  EXPECT_EQ(server_->StandardError(), "");
}

TEST_F(NothingHangsTest, WhatAClientCausesAgainAndAgainIsCounted) {
  constexpr std::size_t kTimes = 1000;
  Start();
  const RawClient client = Connect();
  for (std::size_t i = 0; i < kTimes; ++i) client.Ask(HarmlessRequest());
  std::size_t written = 0;
  std::size_t counted = 0;
  while (written + counted < kTimes) {
    const Lines lines = server_->TraceUntil("(repeated ");
    written +=
        static_cast<std::size_t>(std::count(lines.begin(), lines.end(), "switching offline/online(7)"));
    counted += std::stoul(lines.back().substr(lines.back().find(' ')));
    EXPECT_THAT(lines.back(), HasSubstr(": switching offline/online(7))"));
  }
  EXPECT_EQ(written + counted, kTimes);
  EXPECT_LT(written, kTimes / 2);
}

TEST_F(NothingHangsTest, APipeInPlaceOfAMessagingFileIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(folder_.Path("korv/pipe.dbc").c_str(), 0600), 0);
  WriteDescription("can.xml", DescriptionFile(Section("MAP", "engine_ecu.xml", kEngineData) +
                                              Section("AUTOCAN", "pipe.dbc", {})));
  Start();
  const RawClient client = Connect();
  Identify(client);
  EXPECT_EQ(Select(client, "can.xml", "MAP"), 1U);
  EXPECT_THAT(server_->WaitFor("   Error messaging automatic loading : "), HasSubstr("pipe.dbc"));
  ExpectGoodSession(client);
}

TEST_F(NothingHangsTest, AHangUpEndsTheSimulatedEcuInOrder) {
  ServerProcess ecu({"--ecu", folder_.Path("korv/engine_ecu.xml"), "--kline", folder_.Path("kline")},
                    folder_.Path("home"), KORVAL_ECU_SIM);
  ecu.WaitFor("Engine control answers on");
  EXPECT_EQ(ecu.Stop(SIGHUP), 0);
  EXPECT_FALSE(std::filesystem::is_symlink(folder_.Path("kline")));
}

TEST_F(NothingHangsTest, ASerialLineIsServedWhenItComesAndWhenItComesBack) {
  const std::string device = folder_.Path("ttyBench");
  Start({"--serial-port", "5", "--serial-device", device, "--open-serial"});
  EXPECT_THAT(server_->WaitFor("Error : Serial port COM5"), HasSubstr(device));
  server_->WaitFor("The serial port is opened by itself");
  for (int plugging = 0; plugging < 2; ++plugging) {
    SerialLine line;
    std::filesystem::create_symlink(line.Device(), device);
    server_->WaitFor("- Open com port");
    EXPECT_EQ(Hex(line.Ask(HarmlessRequest())), Hex(Reply(kSwitching, kSuccess)));
    line.Unplug();
    std::filesystem::remove(device);
    server_->WaitFor("Error : Error retrieving DCB");
  }
  ExpectGoodSession(Connect());
  StopInOrder();
}

TEST_F(NothingHangsTest, ABadStoredSerialSettingClosesTheSerialLineOnly) {
  for (const std::string setting : {"Settings=9600 baud", "Handshaking=RTS"}) {
    SCOPED_TRACE(setting);
    folder_.Write("settings.ini", "[KorvalAsapServer]\nProperties\\" + setting +
                                      "\nProperties\\comAutoStart=-1\n[QOR]\nGeneral\\CommPort=SIM\n");
    Start();
    ExpectGoodSession(Connect());
    StopInOrder();
    EXPECT_THAT(server_->StandardError(), HasSubstr("the serial line stays closed"));
    EXPECT_THAT(server_->RemainingTrace(), ::testing::Not(::testing::Contains("- Open com port")));
  }
}

TEST_F(NothingHangsTest, TheEndTracesThatThePortsAreClosed) {
  Start();
  StopInOrder();
  EXPECT_THAT(server_->RemainingTrace(),
              ::testing::IsSupersetOf({"- Close tcpip server", "- Close RS232 comm port"}));
}

}  // namespace
}  // namespace korval::tests
