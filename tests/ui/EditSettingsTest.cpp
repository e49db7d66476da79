// SPDX-License-Identifier: MIT
// The settings panel on the control: from the toolbar's button to the ports that open again.
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <gmock/gmock.h>

#include "tests/ui/ControlWidgetTest.h"
#include "ui/ConfigComPort.h"

namespace korval::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EditSettingsTest : public ControlWidgetTest {
 protected:
  EditSettingsTest() {
    Store("AsapFolder", "/usr");
    Store("KorvFolder", "/etc");
    CreateAndShow();
    log_.clear();
  }
  void OpenPanel() { Action("Properties").trigger(); }
  void Press(const char* button) { Click(Find<QPushButton>(button)); }
  bool PanelIsShown() const { return Find<QWidget>("ConfigComPort1").isVisible(); }
};

TEST_F(EditSettingsTest, PropertiesClosesThePortsAndBringsThePanelToTheFront) {
  OpenPanel();
  EXPECT_TRUE(PanelIsShown());
  EXPECT_FALSE(Find<QWidget>("txtTerm").isVisible());
  EXPECT_FALSE(tcp_->IsListening());
  EXPECT_EQ(Find<QComboBox>("cboPort").currentText(), "Com2");
  EXPECT_EQ(Find<QComboBox>("cboSpeed").currentText(), "9600");
  EXPECT_EQ(Find<QLineEdit>("txportip").text(), "1001");
  EXPECT_EQ(Find<ui::ConfigComPort>("ConfigComPort1").AsapFolder(), "/usr");
  EXPECT_EQ(Find<ui::ConfigComPort>("ConfigComPort1").KorvFolder(), "/etc");
}

TEST_F(EditSettingsTest, ACancelledEditChangesNothingAndReopensTheTcpServer) {
  OpenPanel();
  Find<QComboBox>("cboSpeed").setCurrentText("300");
  Find<QLineEdit>("txportip").setText("4711");
  Press("cmdCancel");
  EXPECT_FALSE(PanelIsShown());
  EXPECT_TRUE(tcp_->IsListening());
  EXPECT_EQ(tcp_->LocalPort(), 1001);
  EXPECT_EQ(serial_->Settings(), "9600,n,8,1");
  EXPECT_THAT(settings_->written, IsEmpty());
}

TEST_F(EditSettingsTest, TheToolBarsActionsWaitUntilTheEditEnds) {
  OpenPanel();
  Find<QLineEdit>("txportip").setText("4711");
  for (const char* action : {"OpenComm", "Properties"}) {
    EXPECT_FALSE(Action(action).isEnabled()) << action;
    Action(action).trigger();
  }
  EXPECT_FALSE(serial_->IsOpen());
  EXPECT_EQ(Find<QLineEdit>("txportip").text(), "4711");
  for (const char* button : {"cmdCancel", "cmdOK"}) {
    Press(button);
    for (const char* action : {"OpenComm", "Properties"}) {
      EXPECT_TRUE(Action(action).isEnabled()) << action << " after " << button;
    }
    OpenPanel();
  }
}

TEST_F(EditSettingsTest, AnAcceptedEditIsStoredAndInForceAtOnce) {
  OpenPanel();
  Find<QComboBox>("cboSpeed").setCurrentText("19200");
  Find<QComboBox>("cboParity").setCurrentText("Even");
  Find<QComboBox>("cboPort").setCurrentText("Com5");
  Find<QCheckBox>("ck_opencom").setChecked(true);
  Find<QLineEdit>("txportip").setText("4711");
  Press("cmdOK");
  EXPECT_FALSE(PanelIsShown());
  EXPECT_EQ(tcp_->LocalPort(), 4711);
  EXPECT_TRUE(tcp_->IsListening());
  EXPECT_TRUE(serial_->IsOpen());
  EXPECT_EQ(Panel("Settings"), "COM5 Settings: 19200,E,8,1");
  EXPECT_EQ(Stored("Settings"), "19200,E,8,1");
  EXPECT_EQ(Stored("CommPort"), "5");
  EXPECT_EQ(Stored("comAutoStart"), "-1");
  EXPECT_EQ(Stored("tcpipPort"), "4711");
}

TEST_F(EditSettingsTest, WhatWasStoredIsReadBackByTheNextControl) {
  OpenPanel();
  Find<QComboBox>("cboSpeed").setCurrentText("19200");
  Find<QComboBox>("cboStopBits").setCurrentText("1.5");
  Find<QLineEdit>("txportip").setText("4711");
  Press("cmdOK");
  control_.reset();
  CreateAndShow();
  EXPECT_EQ(serial_->Settings(), "19200,N,8,1.5");
  OpenPanel();
  EXPECT_EQ(Find<QComboBox>("cboSpeed").currentText(), "19200");
  EXPECT_EQ(Find<QComboBox>("cboStopBits").currentText(), "1.5");
  EXPECT_EQ(Find<QLineEdit>("txportip").text(), "4711");
}

TEST_F(EditSettingsTest, APortTextThatIsNoNumberKeepsTheOldPort) {
  OpenPanel();
  Find<QLineEdit>("txportip").setText("abc");
  Press("cmdOK");
  EXPECT_EQ(tcp_->LocalPort(), 1001);
  EXPECT_EQ(Stored("tcpipPort"), "1001");
}

TEST_F(EditSettingsTest, AStoreThatCannotBeWrittenIsToldAndTheValuesServeForThisRun) {
  settings_->read_only = true;
  OpenPanel();
  Find<QLineEdit>("txportip").setText("4711");
  Press("cmdOK");
  ASSERT_NE(OpenBox(), nullptr);
  EXPECT_EQ(OpenBox()->text(), "the settings cannot be written");
  EXPECT_EQ(OpenBox()->icon(), QMessageBox::Warning);
  EXPECT_EQ(tcp_->LocalPort(), 4711);
}

TEST_F(EditSettingsTest, TheControlMayBeDeletedInsideTheResetAfterAnEdit) {
  tcp_->Connect();
  tcp_->Arrive(kInit);
  OpenPanel();
  session_->on_close = [this] { control_.reset(); };
  Press("cmdOK");
  EXPECT_EQ(control_, nullptr);
  EXPECT_EQ(Stored("tcpipPort"), "1001");
}

}  // namespace
}  // namespace korval::tests
