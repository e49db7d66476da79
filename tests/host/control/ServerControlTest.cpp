// SPDX-License-Identifier: MIT
#include <filesystem>
#include <initializer_list>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "tests/host/control/ControlBench.h"
#include "tests/support/Await.h"

namespace korval::host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::kExit;
using tests::kInit;

constexpr char kBanner[] = "Korval Asap server V1.3.0.5\r\n";

// Refuses every settings string and handshaking code.
class RefusingSerialPort : public tests::FakeSerialPort {
 public:
  using FakeSerialPort::FakeSerialPort;
  void SetSettings(const std::string& settings) override { throw base::Failure("bad settings " + settings); }
};

using ServerControlTest = tests::ControlBench;

TEST_F(ServerControlTest, InitialiseEmptiesTheTerminalAndTracesTheBannerFirst) {
  terminal->ReplaceSelection("left over");
  const auto control = ServerControl::Create(parts);
  EXPECT_TRUE(control->Initialise());
  EXPECT_EQ(Trace(), kBanner);
  EXPECT_EQ(status->session_status, "Status: Idle");
  EXPECT_EQ(status->panels["Status"], "Wait init");
  EXPECT_FALSE(control->Console().DebugTrace());
  EXPECT_THAT(log, Not(::testing::Contains("listen")));
}

TEST_F(ServerControlTest, InitialiseAppliesTheStoredSettings) {
  settings->user = {{"KorvalAsapServer/Properties/Settings", "19200,e,7,2"},
                    {"KorvalAsapServer/Properties/CommPort", "4"},
                    {"KorvalAsapServer/Properties/Handshaking", "2"},
                    {"KorvalAsapServer/Properties/tcpipPort", "2345"}};
  const auto control = Started();
  EXPECT_EQ(serial->Settings(), "19200,e,7,2");
  EXPECT_EQ(serial->PortNumber(), 4);
  EXPECT_EQ(serial->Handshaking(), 2);
  EXPECT_THAT(Trace(), HasSubstr("Init WinSock : port=2345\r\n"));
}

TEST_F(ServerControlTest, WithoutSettingsThePortIsTwoAndTcpIs1001) {
  const auto control = Started();
  EXPECT_EQ(serial->PortNumber(), 2);
  EXPECT_EQ(serial->Settings(), "9600,n,8,1");
  EXPECT_THAT(Trace(), HasSubstr("Init WinSock : port=1001\r\n"));
  EXPECT_FALSE(serial->IsOpen());
}

TEST_F(ServerControlTest, ACommPortThatIsNoNumberLeavesThePortAsItIs) {
  settings->user["KorvalAsapServer/Properties/CommPort"] = "two";
  const auto control = Started();
  EXPECT_EQ(serial->PortNumber(), 1);
}

TEST_F(ServerControlTest, RefusedSerialSettingsEndTheStartWithAMessageBoxAndNoBanner) {
  settings->user["KorvalAsapServer/Properties/Settings"] = "nonsense";
  parts.serial_port = std::make_shared<RefusingSerialPort>(log);
  const auto control = ServerControl::Create(parts);
  EXPECT_FALSE(control->Initialise());
  EXPECT_THAT(log, ElementsAre("box bad settings nonsense"));
  EXPECT_EQ(Trace(), "");
}

TEST_F(ServerControlTest, WhatARefusedStartDidNotReadKeepsItsDefault) {
  Store("Settings", "nonsense");
  Store("CommPort", "7");
  Store("AsapFolder", "/srv/asap");
  Store("KorvFolder", "/srv/ecu");
  Store("tcpipPort", "2345");
  Store("comAutoStart", "-1");
  const auto refusing = std::make_shared<RefusingSerialPort>(log);
  parts.serial_port = refusing;
  const auto control = ServerControl::Create(parts);
  EXPECT_FALSE(control->Initialise());
  control->Show();
  EXPECT_THAT(Trace(), HasSubstr("Init WinSock : port=1001\r\n"));
  EXPECT_FALSE(refusing->IsOpen());
  control->EditProperties();
  EXPECT_EQ(panel->values,
            (PanelValues{"9600,n,8,1", 1, 0, false, 1001, "/opt/korval", "/opt/korval", "", ""}));
}

TEST_F(ServerControlTest, ARefusedStartLetsInNobodyWhomTheSettingsKeepOut) {
  Store("Settings", "nonsense");
  Store("Listen", "127.0.0.1");
  Store("Allow", "192.168.4.0/24");
  parts.serial_port = std::make_shared<RefusingSerialPort>(log);
  const auto control = ServerControl::Create(parts);
  control->Initialise();
  control->Show();
  EXPECT_EQ(tcp->listen_address, "127.0.0.1");
  EXPECT_EQ(tcp->allowed_clients, "192.168.4.0/24");
}

TEST_F(ServerControlTest, ARefusedStartLeavesInForceWhatWasGivenForThisRun) {
  Store("Settings", "nonsense");
  parts.serial_port = std::make_shared<RefusingSerialPort>(log);
  parts.tcp_port = 11001;
  parts.asap_folder = "/srv/asap";
  parts.korv_folder = "/srv/ecu";
  const auto control = ServerControl::Create(parts);
  EXPECT_FALSE(control->Initialise());
  control->Show();
  EXPECT_THAT(Trace(), HasSubstr("Init WinSock : port=11001\r\n"));
  control->EditProperties();
  EXPECT_EQ(panel->values, (PanelValues{"9600,n,8,1", 1, 0, false, 11001, "/srv/asap", "/srv/ecu", "", ""}));
}

TEST_F(ServerControlTest, AHandshakingThatIsNoNumberEndsTheStart) {
  settings->user["KorvalAsapServer/Properties/Handshaking"] = "RTS";
  const auto control = ServerControl::Create(parts);
  EXPECT_FALSE(control->Initialise());
  ASSERT_EQ(log.size(), 1U);
  EXPECT_THAT(log[0], HasSubstr("Handshaking 'RTS'"));
}

TEST_F(ServerControlTest, ShowOpensTheSerialPortWhenAutoOpenIsSet) {
  settings->user["KorvalAsapServer/Properties/comAutoStart"] = "-1";
  const auto control = Started();
  EXPECT_TRUE(serial->IsOpen());
  EXPECT_THAT(Trace(), HasSubstr("- Open com port\r\n"));
  EXPECT_TRUE(status->connected);
  EXPECT_EQ(status->panels["ConnectTime"], "00:00:00 ");
  EXPECT_EQ(status->panels["Settings"], "COM2 Settings: 9600,n,8,1");
}

TEST_F(ServerControlTest, ASerialPortIsOpenedOnceItsDeviceIsThereAndAgainWhenItComesBack) {
  Store("comAutoStart", "-1");
  serial->open_failure = "no device";
  const auto control = Started();
  ForgetTrace();
  control->KeepSerialPortOpen();
  loop->Advance(std::chrono::minutes(10));
  EXPECT_EQ(Trace(), "The serial port is opened by itself as soon as that is possible\r\n");
  serial->open_failure = "no rights";
  loop->Advance(ServerControl::kSerialInterval);
  serial->open_failure.clear();
  loop->Advance(ServerControl::kSerialInterval);
  EXPECT_TRUE(serial->IsOpen());
  EXPECT_TRUE(status->connected);
  EXPECT_THAT(Trace(), ::testing::EndsWith("\r\nError : no rights\r\n- Open com port\r\n"));
  serial->Unplug();
  serial->open_failure = "no device";
  loop->Advance(ServerControl::kSerialInterval);
  serial->open_failure.clear();
  ForgetTrace();
  loop->Advance(ServerControl::kSerialInterval);
  EXPECT_EQ(Trace(), "- Open com port\r\n");
  control->Terminate();
  loop->Advance(std::chrono::minutes(1));
  EXPECT_FALSE(serial->IsOpen());
}

TEST_F(ServerControlTest, ASerialPortThatIsNotOpenedAtTheStartStaysClosed) {
  const auto control = Started();
  control->KeepSerialPortOpen();
  loop->Advance(std::chrono::minutes(1));
  EXPECT_FALSE(serial->IsOpen());
}

TEST_F(ServerControlTest, ShowRaisesWhenTheTcpPortCannotBeOpened) {
  tcp->listen_failure = "port in use";
  const auto control = ServerControl::Create(parts);
  EXPECT_TRUE(control->Initialise());
  EXPECT_THROW(control->Show(), base::Failure);
}

TEST_F(ServerControlTest, ATcpPortThatCannotBeOpenedDoesNotKeepTheSerialPortClosed) {
  Store("comAutoStart", "-1");
  tcp->listen_failure = "port in use";
  const auto control = ServerControl::Create(parts);
  EXPECT_TRUE(control->Initialise());
  EXPECT_THROW(control->Show(), base::Failure);
  EXPECT_TRUE(serial->IsOpen());
}

TEST_F(ServerControlTest, InitOpensTheSessionAndExitClosesIt) {
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(kInit);
  EXPECT_EQ(control->Session(), session);
  EXPECT_THAT(session->log, ElementsAre("Language=en", HasSubstr("errors.xml"), "Port=COM7"));
  EXPECT_EQ(status->session_status, "Status: Init");
  session->log.clear();
  tcp->Arrive(kExit);
  EXPECT_EQ(control->Session(), nullptr);
  EXPECT_THAT(session->log, ElementsAre("Close", "Port="));
  EXPECT_EQ(status->session_status, "Status: Idle");
}

// With the separators of the system that the test runs on.
std::string PathOf(std::initializer_list<const char*> parts) {
  std::filesystem::path path;
  for (const char* const part : parts) path /= part;
  return path.string();
}

TEST_F(ServerControlTest, TheServerFolderIsTheInstallLocation) {
  settings->machine = {{"QOR/DoNotUseWeb", "1"}, {"QOR/InstallFolder", "/opt/host"}};
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(kInit);
  EXPECT_THAT(Trace(), HasSubstr("Create diagnosis object\r\n  Server = /opt/host\r\n"));
  EXPECT_THAT(session->log, ::testing::Contains("ErrorsFile=" + PathOf({"/opt/host", "errors.xml"})));
}

TEST_F(ServerControlTest, TheErrorTextsAreNeverLookedForInTheWorkingDirectory) {
  const auto errors_file = [this] {
    session->log.clear();
    const auto control = Started();
    tcp->Connect();
    tcp->Arrive(kInit);
    return session->log.at(1);
  };
  EXPECT_EQ(errors_file(), "ErrorsFile=" + PathOf({"/opt/korval", "errors.xml"})) << "nothing is installed";
  settings->user["QOR/General/ServerName"] = "data";
  EXPECT_EQ(errors_file(), "ErrorsFile=" + PathOf({"/opt/korval", "data", "errors.xml"}));
}

TEST_F(ServerControlTest, ResetAllTracesItsStepsAndReopensBothTransports) {
  settings->user["KorvalAsapServer/Properties/comAutoStart"] = "1";
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(kInit);
  session->log.clear();
  log.clear();
  terminal->DropFirst(terminal->Length());
  control->ResetAll();
  EXPECT_EQ(
      Trace(),
      "Reset All\r\n- Close tcpip server\r\n- Close RS232 comm port\r\n- Reinit diagnostique session\r\n"
      "- Open tcpip server\r\nInit WinSock : port=1001\r\n          > LocalHostName=bench\r\n"
      "          > LocalIP=127.0.0.1\r\n          > LocalPort=1001\r\n- Open com port\r\n");
  EXPECT_THAT(log, ElementsAre("close tcp", "close serial", "listen", "open", "raw bytes"));
  EXPECT_THAT(session->log, ElementsAre("Close", "Port="));
  EXPECT_EQ(status->session_status, "Status: Idle");
}

TEST_F(ServerControlTest, ResetAllGoesOnWhenATransportCannotBeClosed) {
  const auto control = Started();
  tcp->close_failure = "socket stuck";
  serial->close_failure = "port stuck";
  control->ResetAll();
  EXPECT_THAT(Trace(),
              HasSubstr("- Close tcpip server\r\n     close tcpip server error : socket stuck\r\n"
                        "- Close RS232 comm port\r\n     close RS232 comm port error : port stuck\r\n"
                        "- Reinit diagnostique session\r\n- Open tcpip server\r\n"));
  tcp->close_failure.clear();
  serial->close_failure.clear();
}

TEST_F(ServerControlTest, ResetAllTracesAPortThatCannotBeReopened) {
  const auto control = Started();
  tcp->listen_failure = "port in use";
  control->ResetAll();
  EXPECT_THAT(Trace(), HasSubstr("- Open tcpip server\r\nInit WinSock error : port in use\r\n"));
}

TEST_F(ServerControlTest, AHostSessionIsUsedAndNeverClosed) {
  const auto control = Started();
  const auto host_session = std::make_shared<tests::FakeSession>();
  control->SetSession(host_session);
  tcp->Connect();
  tcp->Arrive(kInit);
  EXPECT_EQ(control->Session(), host_session);
  tcp->Arrive(kExit);
  control->SetSession(host_session);
  control->ResetAll();
  control->SetSession(host_session);
  control->Terminate();
  EXPECT_EQ(control->Session(), nullptr);
  EXPECT_TRUE(host_session->log.empty());
}

TEST_F(ServerControlTest, ResetAllLeavesAHostSessionInPlaceAndEndsTheClients) {
  const auto control = Started();
  const auto host_session = std::make_shared<tests::FakeSession>();
  control->SetSession(host_session);
  tcp->Connect();
  tcp->Arrive(kInit);
  control->ResetAll();
  EXPECT_EQ(control->Session(), host_session);
  EXPECT_EQ(status->session_status, "Status: Idle");
  ForgetTrace();
  tcp->Connect();
  tcp->Arrive(kInit);
  EXPECT_EQ(control->Session(), host_session);
  EXPECT_THAT(Trace(), ::testing::Not(HasSubstr("Create diagnosis object")));
  control->Terminate();
  EXPECT_TRUE(host_session->log.empty());
}

TEST_F(ServerControlTest, TerminateClosesEverythingInOrder) {
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(kInit);
  log.clear();
  session->log.clear();
  session->on_close = [this] { EXPECT_EQ(scout->shutdowns, 1); };
  control->Terminate();
  EXPECT_THAT(log, ElementsAre("close tcp", "close serial"));
  EXPECT_THAT(Trace(), ::testing::EndsWith("- Close tcpip server\r\n- Close RS232 comm port\r\n"));
  EXPECT_FALSE(tcp->IsListening());
  EXPECT_THAT(session->log, ElementsAre("Close", "Port="));
  log.clear();
  control->Terminate();
  EXPECT_THAT(log, ElementsAre());
}

TEST_F(ServerControlTest, TerminateGoesOnWhenATransportCannotBeClosed) {
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(kInit);
  session->log.clear();
  tcp->close_failure = "socket stuck";
  serial->close_failure = "port stuck";
  control->Terminate();
  EXPECT_THAT(Trace(), HasSubstr("     close tcpip server error : socket stuck\r\n"));
  EXPECT_THAT(Trace(), HasSubstr("     close RS232 comm port error : port stuck\r\n"));
  EXPECT_EQ(scout->shutdowns, 1);
  EXPECT_THAT(session->log, ElementsAre("Close", "Port="));
}

TEST_F(ServerControlTest, ResetAllInsideAResetAllLeavesTheSerialPortOpen) {
  Store("comAutoStart", "-1");
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(kInit);
  session->on_close = [&] { control->ResetAll(); };
  log.clear();
  control->ResetAll();
  EXPECT_TRUE(serial->IsOpen());
  EXPECT_THAT(log, ElementsAre("close tcp", "close serial", "listen", "open", "raw bytes"));
}

TEST_F(ServerControlTest, ASerialPortThatIsOpenedInsideAResetAllStaysOpen) {
  Store("comAutoStart", "-1");
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(kInit);
  session->on_close = [&] { control->ToggleSerialPort(); };
  control->ResetAll();
  EXPECT_TRUE(serial->IsOpen());
}

TEST_F(ServerControlTest, TheSettingsAreNotEditedInsideAResetAll) {
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(kInit);
  session->on_close = [&] { control->EditProperties(); };
  log.clear();
  control->ResetAll();
  EXPECT_THAT(log, ElementsAre("close tcp", "close serial", "listen"));
}

TEST_F(ServerControlTest, NothingIsOpenedAgainWhenTheControlIsTerminatedInsideAResetAll) {
  Store("comAutoStart", "-1");
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(kInit);
  session->on_close = [&] { control->Terminate(); };
  control->ResetAll();
  EXPECT_FALSE(tcp->IsListening());
  EXPECT_FALSE(serial->IsOpen());
}

TEST_F(ServerControlTest, NothingIsOpenedAgainWhenTheControlIsTerminatedInsideADisconnect) {
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(kInit);
  session->on_close = [&] { control->Terminate(); };
  log.clear();
  tcp->Leave();
  EXPECT_FALSE(tcp->IsListening());
  EXPECT_THAT(log, ElementsAre("disconnect", "close tcp", "close serial"));
}

TEST_F(ServerControlTest, NothingIsOpenedWhenTheControlIsTerminatedWhileItIsShown) {
  Store("comAutoStart", "-1");
  settings->user["QOR/General/CommPort"] = "NONE";
  scout->device_list = "<devices><device><sn>A1</sn></device></devices>";
  const auto control = ServerControl::Create(parts);
  control->SetSession(session);
  ASSERT_TRUE(control->Initialise());
  session->on_set_port = [&](const std::string&) { control->Terminate(); };
  control->Show();
  EXPECT_FALSE(tcp->IsListening());
  EXPECT_FALSE(serial->IsOpen());
  EXPECT_THAT(session->log, ElementsAre("Port=")) << "a session that was let go gets no new port";
}

TEST_F(ServerControlTest, MayBeLetGoInsideOneOfItsOwnEvents) {
  auto control = Started();
  tcp->Connect();
  const std::weak_ptr<ServerControl> watch = control;
  session->on_set_port = [&](const std::string& port) {
    if (port != "COM7") return;
    control->Terminate();
    control.reset();
    EXPECT_FALSE(watch.expired()) << "the event under way holds it";
  };
  tcp->Arrive(kInit);
  EXPECT_TRUE(watch.expired());
  EXPECT_TRUE(tcp->TakeSent().empty());
}

}  // namespace
}  // namespace korval::host
