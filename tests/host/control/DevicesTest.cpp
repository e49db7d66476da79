// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/control/ControlBench.h"
#include "tests/support/Await.h"

namespace korval::host {
namespace {

using ::testing::HasSubstr;
using ::testing::Lt;

class DevicesTest : public tests::ControlBench {
 protected:
  void ChooseUsb(const std::string& serial_number) {
    settings->user["QOR/General/CommPort"] = "NONE";
    settings->user["QOR/Hardware/InstanceName"] = serial_number;
  }
};

TEST_F(DevicesTest, InitialisingLooksAtNoDevice) {
  ChooseUsb("A1");
  const auto control = ServerControl::Create(parts);
  EXPECT_TRUE(control->Initialise());
  EXPECT_EQ(scout->lists_given, 0);
  EXPECT_FALSE(scout->IsWatched());
}

TEST_F(DevicesTest, ShowSelectsTheInterfaceBeforeItListens) {
  ChooseUsb("A1");
  scout->device_list = "<sn>B2</sn>";
  const auto control = Started();
  EXPECT_EQ(label->caption, "USB B2");
  EXPECT_THAT(Trace().find("Interface A1 missing"), Lt(Trace().find("Init WinSock")));
}

TEST_F(DevicesTest, PullingTheChosenInterfaceAndPluggingAnotherSwitchesToItAndReopensTheLink) {
  ChooseUsb("A1");
  scout->device_list = "<sn>A1</sn>";
  const auto control = Started();
  tcp->Connect();
  tcp->Arrive(tests::kInit);
  scout->Change("<none/>");
  EXPECT_EQ(label->fore_colour, diag::PortLabel::kRed);
  EXPECT_EQ(label->tool_tip, "Interface not plug");
  session->log.clear();
  scout->Change("<sn>B2</sn>");
  EXPECT_EQ(label->caption, "USB B2");
  EXPECT_EQ(label->fore_colour, diag::PortLabel::kBlack);
  EXPECT_THAT(session->log, ::testing::ElementsAre("Port=", "Port=NONE"));
  EXPECT_EQ(settings->user["QOR/Hardware/InstanceName"], "B2");
}

TEST_F(DevicesTest, TerminateShutsTheEnumeratorDown) {
  const auto control = Started();
  EXPECT_TRUE(scout->IsWatched());
  control->Terminate();
  EXPECT_EQ(scout->shutdowns, 1);
  EXPECT_FALSE(scout->IsWatched());
}

TEST_F(DevicesTest, AChangeAfterTheControlIsGoneDoesNothing) {
  ChooseUsb("A1");
  auto control = Started();
  control.reset();
  ForgetTrace();
  scout->Change("<none/>");
  EXPECT_EQ(Trace(), "");
}

TEST_F(DevicesTest, TheControlMayEndWhileTheLinkIsReopened) {
  ChooseUsb("A1");
  scout->device_list = "<sn>A1</sn>";
  auto control = Started();
  tcp->Connect();
  tcp->Arrive(tests::kInit);
  session->on_set_port = [&](const std::string& port) {
    if (port != "NONE" || !control) return;
    control->Terminate();
    control.reset();
  };
  scout->Change("<sn>B2</sn>");
  EXPECT_EQ(control, nullptr);
  EXPECT_EQ(label->caption, "USB B2");
}

TEST_F(DevicesTest, TheHostMayAskForTheSelectionAgain) {
  const auto control = Started();
  settings->user["QOR/General/CommPort"] = "COM7";
  control->SelectDiagInterface();
  EXPECT_EQ(label->caption, "COM7");
}

TEST_F(DevicesTest, AControlWithoutLabelAndEnumeratorServesAllTheSame) {
  ChooseUsb("A1");
  parts.port_label = nullptr;
  parts.port_scout = nullptr;
  const auto control = Started();
  control->SelectDiagInterface();
  EXPECT_THAT(Trace(), HasSubstr("Init WinSock"));
}

}  // namespace
}  // namespace korval::host
