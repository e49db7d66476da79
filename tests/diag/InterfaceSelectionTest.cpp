// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "diag/InterfaceSelection.h"
#include "host/trace/TextTerminal.h"
#include "tests/support/Await.h"
#include "tests/support/FakePortLabel.h"
#include "tests/support/FakePortScout.h"
#include "tests/support/FakeSession.h"
#include "tests/support/MemorySettings.h"

namespace korval::diag {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kCommPort[] = "QOR/General/CommPort";
constexpr char kInstanceName[] = "QOR/Hardware/InstanceName";

class InterfaceSelectionTest : public testing::Test {
 protected:
  // A USB interface is used; `chosen` is the stored serial number, `plugged` the device list.
  void SelectUsb(const std::string& chosen, const std::string& plugged) {
    store_.user[kCommPort] = "NONE";
    if (!chosen.empty()) store_.user[kInstanceName] = chosen;
    scout_.device_list = plugged;
    selection_.SelectDiagInterface();
  }
  void OpenSession() {
    base::ByteBuffer reply;
    ASSERT_TRUE(tests::Await(diagnosis_.CreateDiagnosisObject(reply)));
    session_->log.clear();
    terminal_.DropFirst(terminal_.Length());
  }
  std::string Stored() { return store_.user[kInstanceName]; }

  host::TextTerminal terminal_;
  host::TraceConsole console_{terminal_};
  tests::MemorySettings store_;
  host::HostSettings settings_{store_};
  tests::FakePortScout scout_;
  tests::FakePortLabel label_;
  std::shared_ptr<tests::FakeSession> session_ = std::make_shared<tests::FakeSession>();
  DiagnosisObject diagnosis_{console_, [this] { return session_; }, [] {}};
  InterfaceSelection selection_{console_, settings_, scout_, label_, diagnosis_};
};

constexpr char kTwoPlugged[] = "<devices><device><sn>A1</sn></device><device><sn>B2</sn></device></devices>";

TEST_F(InterfaceSelectionTest, ASerialPortIsShownAndTheDeviceListIsNotConsulted) {
  store_.user[kCommPort] = "COM3";
  selection_.SelectDiagInterface();
  EXPECT_EQ(label_.caption, "COM3");
  EXPECT_EQ(scout_.lists_given, 0);
  EXPECT_EQ(terminal_.Text(), "");
  EXPECT_THAT(store_.written, IsEmpty());
}

TEST_F(InterfaceSelectionTest, WithoutAStoredPortTheLabelIsEmpty) {
  label_.caption = "before";
  selection_.SelectDiagInterface();
  EXPECT_EQ(label_.caption, "");
  EXPECT_EQ(scout_.lists_given, 0);
}

TEST_F(InterfaceSelectionTest, OnlyTheExactWordNoneMeansUsb) {
  store_.user[kCommPort] = "none";
  selection_.SelectDiagInterface();
  EXPECT_EQ(label_.caption, "none");
  EXPECT_EQ(scout_.lists_given, 0);
}

TEST_F(InterfaceSelectionTest, AChosenInterfaceThatIsPluggedInIsKeptWithoutATrace) {
  OpenSession();
  SelectUsb("B2", kTwoPlugged);
  EXPECT_EQ(label_.caption, "USB B2");
  EXPECT_EQ(label_.fore_colour, PortLabel::kBlack);
  EXPECT_EQ(terminal_.Text(), "");
  EXPECT_THAT(store_.written, IsEmpty());
  EXPECT_THAT(session_->log, IsEmpty());
}

TEST_F(InterfaceSelectionTest, AMissingInterfaceIsReplacedByTheFirstListed) {
  SelectUsb("Z9", kTwoPlugged);
  EXPECT_EQ(terminal_.Text(), "Interface Z9 missing , automaticaly choose first one : A1\r\n");
  EXPECT_EQ(Stored(), "A1");
  EXPECT_EQ(label_.caption, "USB A1");
  EXPECT_EQ(label_.fore_colour, PortLabel::kBlack);
}

TEST_F(InterfaceSelectionTest, WithoutAChoiceTheFirstListedIsChosen) {
  SelectUsb("", kTwoPlugged);
  EXPECT_EQ(terminal_.Text(), "No interface selected, automaticaly choose first one : A1\r\n");
  EXPECT_EQ(Stored(), "A1");
  EXPECT_EQ(label_.caption, "USB A1");
}

TEST_F(InterfaceSelectionTest, SerialNumbersAreComparedExactly) {
  SelectUsb("b2", kTwoPlugged);
  EXPECT_EQ(Stored(), "A1");
}

TEST_F(InterfaceSelectionTest, SerialNumbersAreFoundAtAnyDepthInTheOrderListed) {
  SelectUsb("", "<a><b><c><sn>deep</sn></c></b><sn>flat</sn></a>");
  EXPECT_EQ(Stored(), "deep");
}

TEST_F(InterfaceSelectionTest, AChangedChoiceReleasesAndReopensTheLink) {
  OpenSession();
  SelectUsb("Z9", kTwoPlugged);
  EXPECT_THAT(session_->log, ElementsAre("Port=", "Port=NONE"));
}

TEST_F(InterfaceSelectionTest, TheChoiceIsStoredBeforeTheLinkIsReopened) {
  OpenSession();
  std::string stored_then;
  session_->on_set_port = [&](const std::string&) { stored_then = Stored(); };
  SelectUsb("", kTwoPlugged);
  EXPECT_EQ(stored_then, "A1");
}

TEST_F(InterfaceSelectionTest, ASessionThatEndsWhileItsLinkIsReleasedGetsNoNewPort) {
  OpenSession();
  session_->on_set_port = [&](const std::string&) {
    session_->on_set_port = nullptr;
    diagnosis_.ReleaseDiagnosisObject();
  };
  SelectUsb("Z9", kTwoPlugged);
  EXPECT_THAT(session_->log, ElementsAre("Port=", "Close", "Port="));
}

TEST_F(InterfaceSelectionTest, AChangeWhileTheLinkIsReopenedIsSelectedAfterwards) {
  OpenSession();
  session_->on_set_port = [&](const std::string& port) {
    if (port != "NONE") return;
    session_->on_set_port = nullptr;
    scout_.device_list = "<devices><sn>C3</sn></devices>";
    selection_.SelectDiagInterface();
    EXPECT_EQ(Stored(), "A1") << "not before the first selection has ended";
  };
  SelectUsb("Z9", kTwoPlugged);
  EXPECT_EQ(Stored(), "C3");
  EXPECT_EQ(label_.caption, "USB C3");
}

TEST_F(InterfaceSelectionTest, AFailureToReleaseTheLinkIsForgotten) {
  OpenSession();
  session_->on_set_port = [](const std::string& port) {
    if (port.empty()) throw base::Failure(1000, "interface gone");
  };
  SelectUsb("Z9", kTwoPlugged);
  EXPECT_THAT(session_->log, ElementsAre("Port=", "Port=NONE"));
  EXPECT_EQ(terminal_.Text(), "Interface Z9 missing , automaticaly choose first one : A1\r\n");
}

TEST_F(InterfaceSelectionTest, AFailureToReopenTheLinkIsTracedAndTheSessionStays) {
  OpenSession();
  session_->on_set_port = [](const std::string& port) {
    if (port == "NONE") throw base::Failure(1002, "interface busy");
  };
  SelectUsb("", kTwoPlugged);
  EXPECT_EQ(terminal_.Text(),
            "No interface selected, automaticaly choose first one : A1\r\n"
            "Error when opening com port : interface busy\r\n");
  EXPECT_EQ(label_.fore_colour, PortLabel::kBlack);
  EXPECT_EQ(label_.caption, "USB A1");
  EXPECT_EQ(diagnosis_.Session(), session_);
}

TEST_F(InterfaceSelectionTest, NothingPluggedInTracesTwoLinesAndShowsARedLabelAndKeepsTheChoice) {
  OpenSession();
  SelectUsb("Z9", "<devices/>");
  EXPECT_EQ(terminal_.Text(),
            "No USB-Diag interface plug on PC\r\nSelected USB-Diag is Z9 plug them !!!\r\n");
  EXPECT_EQ(label_.tool_tip, "Interface not plug");
  EXPECT_EQ(label_.fore_colour, PortLabel::kRed);
  EXPECT_EQ(label_.caption, "USB Z9");
  EXPECT_EQ(Stored(), "Z9");
  EXPECT_THAT(store_.written, IsEmpty());
  EXPECT_THAT(session_->log, IsEmpty());
}

TEST_F(InterfaceSelectionTest, NothingPluggedInAndNothingChosenLeavesTheNumberOut) {
  SelectUsb("", "");
  EXPECT_EQ(terminal_.Text(), "No USB-Diag interface plug on PC\r\nSelected USB-Diag is  plug them !!!\r\n");
  EXPECT_EQ(label_.caption, "USB ");
}

TEST_F(InterfaceSelectionTest, ADeviceListThatCannotBeReadCountsAsEmpty) {
  SelectUsb("A1", "<devices><sn>A1</sn>");
  EXPECT_EQ(label_.fore_colour, PortLabel::kRed);
  EXPECT_EQ(Stored(), "A1");
}

TEST_F(InterfaceSelectionTest, PluggingTheInterfaceInAgainTurnsTheLabelBlackWithoutItsWarning) {
  SelectUsb("A1", "<devices/>");
  terminal_.DropFirst(terminal_.Length());
  SelectUsb("A1", kTwoPlugged);
  EXPECT_EQ(label_.fore_colour, PortLabel::kBlack);
  EXPECT_EQ(label_.tool_tip, "");
  EXPECT_EQ(terminal_.Text(), "");
}

TEST_F(InterfaceSelectionTest, ChoosingASerialPortAfterwardsTurnsTheLabelBlack) {
  SelectUsb("A1", "<devices/>");
  store_.user[kCommPort] = "COM4";
  selection_.SelectDiagInterface();
  EXPECT_EQ(label_.fore_colour, PortLabel::kBlack);
  EXPECT_EQ(label_.tool_tip, "");
  EXPECT_EQ(label_.caption, "COM4");
}

TEST_F(InterfaceSelectionTest, AChoiceThatCannotBeStoredServesAllTheSame) {
  store_.read_only = true;
  SelectUsb("", kTwoPlugged);
  EXPECT_EQ(label_.caption, "USB A1");
}

TEST_F(InterfaceSelectionTest, AHostSessionIsReopenedToo) {
  diagnosis_.SetSession(session_);
  SelectUsb("Z9", kTwoPlugged);
  EXPECT_THAT(session_->log, ElementsAre("Port=", "Port=NONE"));
}

}  // namespace
}  // namespace korval::diag
