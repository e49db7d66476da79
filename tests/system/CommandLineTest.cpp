// SPDX-License-Identifier: MIT
// The server's options, its stored settings, and how it ends.
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/system/FreePort.h"
#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

/// A port of 127.0.0.1 that is taken for as long as this object lives.
class TakenPort {
 public:
  TakenPort() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(listen(socket_, 1), 0);
    EXPECT_EQ(getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size), 0);
    number_ = ntohs(address.sin_port);
  }
  ~TakenPort() { close(socket_); }
  TakenPort(const TakenPort&) = delete;
  TakenPort& operator=(const TakenPort&) = delete;

  int Number() const { return number_; }

 private:
  int socket_;
  int number_ = 0;
};

class CommandLineTest : public ServerBench {
 protected:
  /// Runs the program to its end and returns the exit status; what it printed stays in `server_`.
  int Run(const std::vector<std::string>& options) {
    server_.emplace(options, folder_.Path("home"));
    return server_->WaitForExit();
  }
  /// The safe options with `more`.
  std::vector<std::string> With(const std::vector<std::string>& more) const {
    std::vector<std::string> options = SafeOptions();
    options.insert(options.end(), more.begin(), more.end());
    return options;
  }
  void StartWith(const std::vector<std::string>& more) {
    server_.emplace(With(more), folder_.Path("home"));
    start_ = server_->TraceUntil("          > LocalPort=");
    port_ = std::stoi(start_.back().substr(start_.back().find('=') + 1));
  }
  std::string StoredSettings() const {
    std::ifstream file(folder_.Path("settings.ini"));
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
  }
  void StoreSettings(const std::string& more) const {
    folder_.Write("settings.ini", "[KorvalAsapServer]\nProperties\\AsapFolder=" + folder_.Path("asap") +
                                      "\nProperties\\KorvFolder=" + folder_.Path("korv") + "\n" + more);
  }
  static std::string Joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
  }

  Lines start_;
};

TEST_F(CommandLineTest, VersionAndHelpEndAtOnce) {
  EXPECT_EQ(Run({"--version"}), 0);
  EXPECT_THAT(Joined(server_->RemainingTrace()), HasSubstr("1.3"));
  EXPECT_EQ(Run({"--help"}), 0);
  const std::string help = Joined(server_->RemainingTrace());
  for (const std::string option :
       {"--headless", "--tcp-port", "--listen", "--serial-port", "--serial-device", "--serial-settings",
        "--handshaking", "--open-serial", "--asap-folder", "--korv-folder", "--diag-port", "--settings",
        "--install-record", "--debug", "--power", "--allow", "--version", "--help"})
    EXPECT_THAT(help, HasSubstr(option));
}

TEST_F(CommandLineTest, WrongUsageIsStatus2WithASentenceThatNamesTheOption) {
  const std::vector<std::vector<std::string>> wrong = {{"--frobnicate"},           {"--tcp-port"},
                                                       {"--tcp-port", "abc"},      {"--tcp-port", "70000"},
                                                       {"--tcp-port", "-1"},       {"--tcp-port", "12x"},
                                                       {"--listen", "nonsense"},   {"--listen", "300.1.2.3"},
                                                       {"--serial-port", "x"},     {"--handshaking", "maybe"},
                                                       {"--power", "maybe"},       {"--allow", "300.1.2.3"},
                                                       {"--allow", "10.0.0.0/40"}, {"--allow", "10.0.0.0/x"},
                                                       {"--allow", "nobody"},      {"stray"}};
  for (const std::vector<std::string>& options : wrong) {
    SCOPED_TRACE(options.front() + " " + options.back());
    EXPECT_EQ(Run(With(options)), 2);
    std::string named = options.front();
    named.erase(0, named.find_first_not_of('-'));
    EXPECT_THAT(server_->StandardError(), HasSubstr(named));
    EXPECT_THAT(server_->RemainingTrace(), Not(Contains(HasSubstr("Init WinSock"))));
  }
}

TEST_F(CommandLineTest, APortInUseIsStatus1WithASentence) {
  const TakenPort taken;
  const std::string number = std::to_string(taken.Number());
  EXPECT_EQ(Run(With({"--tcp-port", number, "--diag-port", "SIM"})), 1);
  EXPECT_THAT(server_->StandardError(), HasSubstr(number));
}

TEST_F(CommandLineTest, AnAddressThatIsNotThisMachinesIsStatus1WithASentence) {
  EXPECT_EQ(Run({"--headless", "--listen", "192.0.2.1", "--tcp-port", "0", "--power", "dry-run",
                 "--diag-port", "SIM", "--settings", folder_.Path("settings.ini"), "--install-record",
                 folder_.Path("install.ini")}),
            1);
  EXPECT_THAT(server_->StandardError(), HasSubstr("192.0.2.1"));
}

TEST_F(CommandLineTest, WithoutAWindowNothingThatDrawsOneIsLoaded) {
  Start();
  const RawClient client = Connect();
  ExpectGoodSession(client);
  const std::set<std::string> files = server_->MappedFiles();
  EXPECT_THAT(files, Contains(StartsWith("libQt6Core.")));
  for (const std::string drawing : {"korval-asap-server-window", "libQt6Gui", "libQt6Widgets", "libQt6OpenGL",
                                    "libX11", "libxcb", "libGL", "libEGL", "libfontconfig"}) {
    EXPECT_THAT(files, Not(Contains(StartsWith(drawing))));
  }
}

TEST_F(CommandLineTest, AnInterruptATerminationAndAHangUpEndInOrder) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Start();
    EXPECT_EQ(server_->Stop(signal), 0);
  }
  Start();
  const RawClient client = Connect();
  OpenEngine(client);
  StopInOrder();
}

TEST_F(CommandLineTest, ThePortGivenIsThePortInUse) {
  const int port = FreePort();
  StartWith({"--tcp-port", std::to_string(port), "--diag-port", "SIM"});
  EXPECT_EQ(port_, port);
  EXPECT_THAT(start_, Contains("Init WinSock : port=" + std::to_string(port)));
  {
    const RawClient client = Connect();
    Succeed(client, Request(kInit));
  }
  EXPECT_THAT(TraceUntilListening(), Contains("close WinSock"));
  const RawClient next = Connect();
  Succeed(next, Request(kInit));
}

TEST_F(CommandLineTest, StoredSettingsAreUsed) {
  const int port = FreePort();
  StoreSettings("Properties\\tcpipPort=" + std::to_string(port) + "\n[QOR]\nGeneral\\CommPort=SIM\n");
  const std::string before = StoredSettings();
  StartWith({});
  EXPECT_EQ(port_, port);
  {
    const RawClient client = Connect();
    ExpectGoodSession(client);
  }
  StopInOrder();
  EXPECT_EQ(StoredSettings(), before);
}

TEST_F(CommandLineTest, OptionsOverrideStoredSettingsAndAreNotSaved) {
  folder_.Write("settings.ini",
                "[KorvalAsapServer]\nProperties\\tcpipPort=1\nProperties\\AsapFolder=/nowhere\n"
                "Properties\\KorvFolder=/nowhere\n[QOR]\nGeneral\\CommPort=/dev/nothing\n");
  const std::string before = StoredSettings();
  Start();
  {
    const RawClient client = Connect();
    ExpectGoodSession(client);
  }
  StopInOrder();
  EXPECT_EQ(StoredSettings(), before);
}

TEST_F(CommandLineTest, TheFirstStartChoosesTheSimulatedEcuAndSaysSo) {
  StartWith({"--tcp-port", "0"});
  EXPECT_THAT(Joined(start_), HasSubstr("SIM"));
  EXPECT_THAT(StoredSettings(), AllOf(HasSubstr("[QOR]"), HasSubstr("General\\CommPort=SIM")));
  {
    const RawClient client = Connect();
    Succeed(client, Request(kInit));
  }
  StopInOrder();
  StartWith({"--tcp-port", "0"});
  EXPECT_THAT(Joined(start_), Not(HasSubstr("SIM")));
}

// Whatever is plugged into this computer, the interface chosen is not.
TEST_F(CommandLineTest, WithoutAWindowTheInterfaceIsSelectedToo) {
  StoreSettings("Properties\\tcpipPort=" + std::to_string(FreePort()) +
                "\n[QOR]\nGeneral\\CommPort=NONE\nHardware\\InstanceName=no-such\n");
  StartWith({});
  EXPECT_THAT(Joined(start_),
              AnyOf(HasSubstr("Selected USB-Diag is no-such plug them !!!"),
                    HasSubstr("Interface no-such missing , automaticaly choose first one : ")));
}

TEST_F(CommandLineTest, ADamagedSettingsFileIsReportedOnceAndDefaultsServe) {
  const std::string garbage = FromHex("00FF00FE") + "[[[\n=====\n\"unclosed\n%%%" + std::string(1000, '\x01');
  folder_.Write("settings.ini", garbage);
  Start();
  {
    const RawClient client = Connect();
    ExpectGoodSession(client);
  }
  StopInOrder();
  const std::string said = server_->StandardError() + Joined(server_->RemainingTrace());
  const std::size_t first = said.find(folder_.Path("settings.ini"));
  ASSERT_NE(first, std::string::npos) << said;
  EXPECT_EQ(said.find(folder_.Path("settings.ini"), first + 1), std::string::npos) << said;
}

TEST_F(CommandLineTest, ASettingsFileThatCannotBeReadLeavesTheDefaults) {
  std::filesystem::create_directory(folder_.Path("settings.ini"));
  Start();
  const RawClient client = Connect();
  ExpectGoodSession(client);
}

TEST_F(CommandLineTest, AnInstallRecordIsNotNeeded) {
  std::filesystem::remove(folder_.Path("install.ini"));
  Start();
  const RawClient client = Connect();
  Succeed(client, Request(kInit));
  EXPECT_EQ(server_->WaitFor("  Server = "), "  Server = ");
  ExpectGoodSession(client);
}

TEST_F(CommandLineTest, AnInstallationThatIsNotLocalIsTheServersName) {
  folder_.Write("install.ini", "[QOR]\nDoNotUseWeb=0\nInstallFolder=/not/this\n");
  folder_.Write("settings.ini", "[QOR]\nGeneral\\ServerName=/srv/host\n");
  Start();
  const RawClient client = Connect();
  Succeed(client, Request(kInit));
  EXPECT_EQ(server_->WaitFor("  Server = "), "  Server = /srv/host");
}

TEST_F(CommandLineTest, OnlyStoredClientsAreServed) {
  folder_.Write("settings.ini", "[KorvalAsapServer]\nProperties\\Allow=192.0.2.0/24, 127.0.0.1\n");
  Start();
  {
    ExpectGoodSession(Connect());
    const RawClient stranger("127.0.0.2", port_);
    EXPECT_TRUE(stranger.EndedByServer());
  }
  server_->WaitFor("Client 127.0.0.2 refused");
  StopInOrder();

  Start({"--allow", "127.0.0.2"});
  ExpectGoodSession(RawClient("127.0.0.2", port_));
  const RawClient stranger("127.0.0.1", port_);
  EXPECT_TRUE(stranger.EndedByServer());
}

TEST_F(CommandLineTest, TheStoredAddressIsListenedOn) {
  std::vector<std::string> options = With({"--tcp-port", "0"});
  const auto listen = std::find(options.begin(), options.end(), "--listen");
  options.erase(listen, listen + 2);
  folder_.Write("settings.ini", "[KorvalAsapServer]\nProperties\\Listen=127.0.0.3\n");
  server_.emplace(options, folder_.Path("home"));
  EXPECT_EQ(server_->WaitFor("          > LocalIP="), "          > LocalIP=127.0.0.3");
}

TEST_F(CommandLineTest, AMistypedListOfClientsLetsNobodyIn) {
  for (const std::string allow : {"192.168.4", "127.0.0.1, 10.0.0.0/88", "127.0.0.1; 10.0.0.1", ","}) {
    SCOPED_TRACE(allow);
    folder_.Write("settings.ini", "[KorvalAsapServer]\nProperties\\Allow=\"" + allow + "\"\n");
    EXPECT_EQ(Run(With({"--tcp-port", "0"})), 1);
    EXPECT_THAT(server_->StandardError(),
                AllOf(HasSubstr("stays closed: '"), HasSubstr("is no IP address of allowed clients")));
  }
}

TEST_F(CommandLineTest, ADamagedSettingsFileLetsInThisMachineOnlyAndSimulatesNothing) {
  folder_.Write("settings.ini", "[KorvalAsapServer]\nProperties\\Allow 192.0.2.0/24\n");
  server_.emplace(With({"--tcp-port", "0"}), folder_.Path("home"));
  server_->WaitFor("Which diagnostic interface was chosen cannot be read");
  port_ = server_->WaitForPort();
  const RawClient client = Connect();
  EXPECT_EQ(ErrorNumberOf(client.Ask(Request(kInit))), 1001U);
  EXPECT_THAT(server_->StandardError(), HasSubstr("lets in clients on this computer only"));
}

TEST_F(CommandLineTest, OnlyAllowedClientsAreServed) {
  Start({"--allow", "10.0.0.0/8", "--allow", "192.0.2.7"});
  {
    const RawClient client = Connect();
    EXPECT_TRUE(client.EndedByServer());
  }
  StopInOrder();
  EXPECT_THAT(server_->RemainingTrace(), Not(Contains(HasSubstr("          > RemoteHostIP="))));

  for (const std::string allowed : {"127.0.0.1", "127.0.0.0/8", "0.0.0.0/0"}) {
    SCOPED_TRACE(allowed);
    Start({"--allow", "192.0.2.7", "--allow", allowed});
    const RawClient client = Connect();
    ExpectGoodSession(client);
  }
}

TEST_F(CommandLineTest, AClientThatIsNotAllowedDoesNotReplaceOneThatIs) {
  Start({"--allow", "127.0.0.2"});
  const RawClient client("127.0.0.2", port_);
  OpenEngine(client);
  const RawClient stranger = Connect();
  EXPECT_TRUE(stranger.EndedByServer());
  EXPECT_EQ(StatusOf(client.Ask(GetRequest(1, "N"))), kSuccess);
}

}  // namespace
}  // namespace korval::tests
