// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "tests/host/control/ControlBench.h"

namespace korval::host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kResetAll[] =
    "Reset All\r\n- Close tcpip server\r\n- Close RS232 comm port\r\n- Reinit diagnostique session\r\n"
    "- Open tcpip server\r\n";

// Takes every handshaking code but 3.
class PickySerialPort : public tests::FakeSerialPort {
 public:
  using FakeSerialPort::FakeSerialPort;
  void SetHandshaking(std::int32_t code) override {
    if (code == 3) throw base::Failure("no RTS line");
    FakeSerialPort::SetHandshaking(code);
  }
};

using EditPropertiesTest = tests::ControlBench;

TEST_F(EditPropertiesTest, IsRefusedWhileTheSerialPortIsOpen) {
  const auto control = Started();
  control->ToggleSerialPort();
  log.clear();
  ForgetTrace();
  control->EditProperties();
  EXPECT_THAT(log, ElementsAre("box You can change communicate settings only when communication is off"));
  EXPECT_EQ(Trace(), "");
  EXPECT_TRUE(tcp->IsListening());
}

TEST_F(EditPropertiesTest, ClosesTheTransportsLoadsThePanelAndShowsIt) {
  const auto control = Started();
  log.clear();
  ForgetTrace();
  control->EditProperties();
  EXPECT_THAT(log, ElementsAre("close tcp", "close serial", "panel loaded", "panel shown"));
  EXPECT_EQ(Trace(), "- Close tcpip server\r\n- Close RS232 comm port\r\n");
  EXPECT_FALSE(tcp->IsListening());
}

TEST_F(EditPropertiesTest, TheSerialPortStaysClosedWhileThePanelIsShown) {
  const auto control = Started();
  control->EditProperties();
  control->ToggleSerialPort();
  EXPECT_FALSE(serial->IsOpen());
  control->TakePanelResult(true);
  control->ToggleSerialPort();
  EXPECT_TRUE(serial->IsOpen());
}

TEST_F(EditPropertiesTest, APanelThatIsShownIsNotLoadedAgain) {
  const auto control = Started();
  control->EditProperties();
  log.clear();
  control->EditProperties();
  EXPECT_THAT(log, ElementsAre());
}

TEST_F(EditPropertiesTest, LoadsThePanelWithTheCurrentValues) {
  settings->user = {};
  Store("Settings", "19200,e,7,2");
  Store("CommPort", "4");
  Store("Handshaking", "2");
  Store("AsapFolder", "/srv/asap");
  Store("KorvFolder", "/srv/ecu");
  Store("tcpipPort", "2345");
  const auto control = Started();
  control->EditProperties();
  EXPECT_EQ(panel->values, (PanelValues{"19200,e,7,2", 4, 2, false, 2345, "/srv/asap", "/srv/ecu", "", ""}));
}

TEST_F(EditPropertiesTest, LoadsThePanelWithTheDefaultsWhenNothingIsStored) {
  const auto control = Started();
  control->EditProperties();
  EXPECT_EQ(panel->values,
            (PanelValues{"9600,n,8,1", 2, 0, false, 1001, "/opt/korval", "/opt/korval", "", ""}));
}

TEST_F(EditPropertiesTest, ACancelledEditHidesThePanelAndResetsAll) {
  const auto control = Started();
  control->EditProperties();
  panel->values = {"300,n,8,1", 9, 1, true, 4711, "/other", "/other", "", ""};
  log.clear();
  ForgetTrace();
  control->TakePanelResult(true);
  EXPECT_EQ(log.front(), "panel hidden");
  EXPECT_THAT(Trace(), HasSubstr(kResetAll));
  EXPECT_THAT(Trace(), HasSubstr("Init WinSock : port=1001\r\n"));
  EXPECT_THAT(Trace(), Not(HasSubstr("- Open com port")));
  EXPECT_TRUE(tcp->IsListening());
  EXPECT_EQ(serial->Settings(), "9600,n,8,1");
  EXPECT_EQ(serial->PortNumber(), 2);
}

TEST_F(EditPropertiesTest, AnAcceptedEditIsTakenOverBeforeEverythingIsReset) {
  const auto control = Started();
  control->EditProperties();
  panel->values = {"19200,E,8,1", 5, 1, true, 4711, "/other/asap", "/other/ecu", "", ""};
  ForgetTrace();
  control->TakePanelResult(false);
  EXPECT_EQ(serial->Settings(), "19200,E,8,1");
  EXPECT_EQ(serial->PortNumber(), 5);
  EXPECT_EQ(serial->Handshaking(), 1);
  EXPECT_TRUE(serial->IsOpen());
  EXPECT_THAT(Trace(), HasSubstr(kResetAll));
  EXPECT_THAT(Trace(), HasSubstr("Init WinSock : port=4711\r\n"));
  EXPECT_THAT(Trace(), HasSubstr("- Open com port\r\n"));
  EXPECT_EQ(status->panels["Settings"], "COM5 Settings: 19200,E,8,1");
}

TEST_F(EditPropertiesTest, TheClientsThatAreLetInChangeWithTheReset) {
  Store("Listen", "192.168.4.10");
  Store("Allow", "192.168.4.0/24");
  const auto control = Started();
  control->EditProperties();
  EXPECT_EQ(panel->values.listen, "192.168.4.10");
  EXPECT_EQ(panel->values.allow, "192.168.4.0/24");
  panel->values.listen = "127.0.0.1";
  panel->values.allow = "127.0.0.1";
  control->TakePanelResult(false);
  EXPECT_EQ(tcp->listen_address, "127.0.0.1");
  EXPECT_EQ(tcp->allowed_clients, "127.0.0.1");
  EXPECT_TRUE(tcp->IsListening());
}

TEST_F(EditPropertiesTest, TheValuesTakenOverAreThoseOfTheNextEdit) {
  const auto control = Started();
  control->EditProperties();
  const PanelValues edited{"19200,E,8,1", 5, 1, false, 4711, "/other/asap", "/other/ecu", "", ""};
  panel->values = edited;
  control->TakePanelResult(false);
  panel->values = {};
  control->EditProperties();
  EXPECT_EQ(panel->values, edited);
}

TEST_F(EditPropertiesTest, AnEditTurnsOpeningAtStartOffAgain) {
  Store("comAutoStart", "-1");
  const auto control = Started();
  control->ToggleSerialPort();
  control->EditProperties();
  EXPECT_TRUE(panel->values.com_auto_open);
  panel->values.com_auto_open = false;
  control->TakePanelResult(false);
  EXPECT_FALSE(serial->IsOpen());
}

TEST_F(EditPropertiesTest, AValueThatTheSerialPortRefusesIsToldAndTheRestServes) {
  parts.serial_port = serial = std::make_shared<PickySerialPort>(log);
  const auto control = Started();
  control->EditProperties();
  panel->values.handshaking = 3;
  panel->values.tcp_ip_port = 4711;
  log.clear();
  control->TakePanelResult(false);
  EXPECT_THAT(log, ::testing::Contains("box no RTS line"));
  EXPECT_THAT(Trace(), HasSubstr("Init WinSock : port=4711\r\n"));
}

TEST_F(EditPropertiesTest, TheStoredSettingsAreLeftToThePanel) {
  const auto control = Started();
  control->EditProperties();
  control->TakePanelResult(false);
  EXPECT_TRUE(settings->written.empty());
}

TEST_F(EditPropertiesTest, WithoutAPanelNothingHappens) {
  parts.panel = nullptr;
  const auto control = Started();
  log.clear();
  control->EditProperties();
  control->TakePanelResult(false);
  EXPECT_TRUE(log.empty());
  EXPECT_TRUE(tcp->IsListening());
}

TEST_F(EditPropertiesTest, AnEditBeginsWithTheClientGoneAndItsSessionClosedByTheReset) {
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(tests::kInit);
  control->EditProperties();
  EXPECT_FALSE(tcp->HasClient());
  control->TakePanelResult(true);
  EXPECT_EQ(control->Session(), nullptr);
  EXPECT_EQ(status->session_status, "Status: Idle");
}

TEST_F(EditPropertiesTest, AnEditLeavesAHostSessionInPlaceHoweverItEnds) {
  for (const bool cancelled : {false, true}) {
    const auto control = Started();
    const auto host_session = std::make_shared<tests::FakeSession>();
    control->SetSession(host_session);
    tcp->Connect();
    tcp->Arrive(tests::kInit);
    control->EditProperties();
    control->TakePanelResult(cancelled);
    EXPECT_EQ(control->Session(), host_session) << cancelled;
    EXPECT_TRUE(host_session->log.empty()) << cancelled;
  }
}

}  // namespace
}  // namespace korval::host
