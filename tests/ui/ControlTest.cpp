// SPDX-License-Identifier: MIT
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolBar>
#include <gmock/gmock.h>

#include "base/Failure.h"
#include "tests/ui/ControlWidgetTest.h"
#include "ui/ConfigComPort.h"
#include "ui/PortLabelBox.h"
#include "ui/StateImage.h"

namespace korval::tests {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kBanner[] = "Korval Asap server V1.3.0.5\n";

// Whatever happens while a line opens happens in `on_open`.
class WaitingSerialPort : public FakeSerialPort {
 public:
  using FakeSerialPort::FakeSerialPort;

  void Open() override {
    on_open();
    FakeSerialPort::Open();
  }

  std::function<void()> on_open;
};

class ControlTest : public ControlWidgetTest {
 protected:
  QStringList Headers(const char* list) const {
    const auto* model = Find<ui::RowList>(list).model();
    QStringList headers;
    for (int i = 0; i < model->columnCount(); ++i) headers << model->headerData(i, Qt::Horizontal).toString();
    return headers;
  }
};

TEST_F(ControlTest, HasItsControlsUnderTheirNamesWithTheirCaptions) {
  Create();
  EXPECT_EQ(Find<QCheckBox>("Check1").text(), "Check && debug");
  EXPECT_EQ(Find<QPushButton>("ResetAll").text(), "Reset All");
  EXPECT_EQ(Find<QPushButton>("ReadData").text(), "Read data");
  EXPECT_EQ(Find<QPushButton>("ReadIdent").text(), "Read Ecu Ident");
  EXPECT_EQ(Find<QCheckBox>("showvalue").text(), "Display Get Online value");
  EXPECT_TRUE(Find<QToolBar>("tbrToolBar").actions().contains(&Action("OpenComm")));
  EXPECT_EQ(Action("Properties").text(), "Properties...");
  EXPECT_EQ(Find<QAbstractButton>("imgConnected").toolTip(), "Toggles Port");
  EXPECT_EQ(Find<QAbstractButton>("imgNotConnected").toolTip(), "Toggles Port");
  EXPECT_EQ(Headers("LVfile"), QStringList({"Id", "File", "parameters file", "address", "Function",
                                            "Protocol", "Identification"}));
  EXPECT_EQ(Headers("LVdata"), QStringList({"Data", "Ecu", "Value", "Korval name"}));
  Find<QLabel>("lbPort");
  Find<ui::ConfigComPort>("ConfigComPort1");
}

TEST_F(ControlTest, TheStatusBarHasFourPanels) {
  Create();
  const auto panels = Find<ui::StatusPanels>("sbrStatus").findChildren<QLabel*>(Qt::FindDirectChildrenOnly);
  ASSERT_EQ(panels.size(), 4);
  EXPECT_EQ(Find<QLabel>("Status").toolTip(), "Communications Port Status");
  EXPECT_EQ(Find<QLabel>("Settings").toolTip(), "Communications Port Settings");
  EXPECT_EQ(Find<QLabel>("ConnectTime").toolTip(), "Connect Time");
  EXPECT_EQ(Panel("Settings"), "Settings:");
  EXPECT_EQ(Panel("timeout"), "Timer");
  EXPECT_EQ(Panel("ConnectTime"), "");
}

TEST_F(ControlTest, StartsWithTheBannerInBlueTheDebugBoxUncheckedAndTheIdleState) {
  Create();
  EXPECT_EQ(Trace(), kBanner);
  const auto& terminal = Find<ui::TerminalBox>("txtTerm");
  EXPECT_EQ(terminal.palette().color(QPalette::Text), QColor(0, 0, 255));
  EXPECT_TRUE(QFontInfo(terminal.font()).fixedPitch());
  EXPECT_TRUE(terminal.isReadOnly());
  EXPECT_FALSE(Find<QCheckBox>("Check1").isChecked());
  EXPECT_EQ(Find<QLabel>("lbStatus").text(), "Status: Idle");
}

TEST_F(ControlTest, OpensNothingBeforeItIsShown) {
  Store("comAutoStart", "-1");
  settings_->user["QOR/General/CommPort"] = "NONE";
  Create();
  EXPECT_THAT(log_, IsEmpty());
  EXPECT_EQ(scout_->lists_given, 0);
}

TEST_F(ControlTest, OpensItsPortsWhenItIsFirstShownAndNotAgain) {
  Store("comAutoStart", "-1");
  CreateAndShow();
  EXPECT_TRUE(tcp_->IsListening());
  EXPECT_TRUE(serial_->IsOpen());
  EXPECT_TRUE(Trace().contains("- Open com port\n"));
  log_.clear();
  control_->hide();
  control_->show();
  QCoreApplication::processEvents();
  EXPECT_THAT(log_, IsEmpty());
}

TEST_F(ControlTest, HidesTheSettingsPanelAtStart) {
  CreateAndShow();
  EXPECT_FALSE(Find<QWidget>("ConfigComPort1").isVisible());
  EXPECT_TRUE(Find<QWidget>("txtTerm").isVisible());
}

TEST_F(ControlTest, RefusedSettingsShowAnExclamationBoxWithoutABanner) {
  Store("Handshaking", "RTS");
  Create();
  ASSERT_NE(OpenBox(), nullptr);
  EXPECT_TRUE(OpenBox()->text().contains("Handshaking 'RTS'"));
  EXPECT_EQ(OpenBox()->icon(), QMessageBox::Warning);
  EXPECT_FALSE(OpenBox()->isModal());
  EXPECT_EQ(Trace(), "");
}

TEST_F(ControlTest, ATcpPortThatCannotBeOpenedIsTracedShownAndSignalled) {
  tcp_->listen_failure = "port in use";
  Create();
  const QSignalSpy failed(control_.get(), &ui::KorvAsapServer::ShowFailed);
  control_->show();
  QCoreApplication::processEvents();
  ASSERT_EQ(failed.count(), 1);
  EXPECT_EQ(failed[0][0].toString(), "port in use");
  ASSERT_NE(OpenBox(), nullptr);
  EXPECT_EQ(OpenBox()->text(), "port in use");
  EXPECT_TRUE(Trace().contains("Init WinSock error : port in use\n"));
}

TEST_F(ControlTest, CheckAndDebugGatesTheFrameDumps) {
  CreateAndShow();
  tcp_->Connect();
  tcp_->Arrive(kInit);
  EXPECT_FALSE(Trace().contains("Byte received"));
  Click(Find<QCheckBox>("Check1"));
  tcp_->Arrive(kInit);
  EXPECT_TRUE(Trace().contains("Byte received : 000600020008"));
}

TEST_F(ControlTest, ResetAllClosesAndReopensTheTcpServer) {
  CreateAndShow();
  log_.clear();
  Click(Find<QPushButton>("ResetAll"));
  EXPECT_THAT(log_, ElementsAre("close tcp", "close serial", "listen"));
  EXPECT_TRUE(
      Trace().contains("Reset All\n- Close tcpip server\n- Close RS232 comm port\n"
                       "- Reinit diagnostique session\n- Open tcpip server\n"));
}

TEST_F(ControlTest, TheOpenCommButtonTogglesTheSerialPort) {
  CreateAndShow();
  Action("OpenComm").trigger();
  EXPECT_TRUE(serial_->IsOpen());
  EXPECT_TRUE(Find<QWidget>("imgConnected").isVisible());
  EXPECT_FALSE(Find<QWidget>("imgNotConnected").isVisible());
  EXPECT_EQ(Panel("Settings"), "COM2 Settings: 9600,n,8,1");
  Action("OpenComm").trigger();
  EXPECT_FALSE(serial_->IsOpen());
  EXPECT_FALSE(Find<QWidget>("imgConnected").isVisible());
  EXPECT_TRUE(Find<QWidget>("imgNotConnected").isVisible());
}

TEST_F(ControlTest, AClickOnEitherImageTogglesTheSerialPort) {
  CreateAndShow();
  Click(Find<QWidget>("imgNotConnected"));
  EXPECT_TRUE(serial_->IsOpen());
  Click(Find<QWidget>("imgConnected"));
  EXPECT_FALSE(serial_->IsOpen());
}

TEST_F(ControlTest, TheConnectionClockCountsWhileThePortIsOpenAndIsEmptiedWhenItCloses) {
  CreateAndShow();
  Action("OpenComm").trigger();
  EXPECT_EQ(Panel("ConnectTime"), "00:00:00 ");
  loop_->Advance(std::chrono::seconds(3723));
  EXPECT_EQ(Panel("ConnectTime"), "01:02:03 ");
  Action("OpenComm").trigger();
  EXPECT_EQ(Panel("ConnectTime"), "");
}

TEST_F(ControlTest, ShowsTheStateOfEachStepOfASession) {
  CreateAndShow();
  tcp_->Connect();
  tcp_->Arrive(kInit);
  EXPECT_EQ(Find<QLabel>("lbStatus").text(), "Status: Init");
  tcp_->Leave();
  EXPECT_EQ(Find<QLabel>("lbStatus").text(), "Status: Idle");
}

TEST_F(ControlTest, TheSettingsAreNotEditedWhileTheSerialPortIsOpen) {
  CreateAndShow();
  Action("OpenComm").trigger();
  Action("Properties").trigger();
  ASSERT_NE(OpenBox(), nullptr);
  EXPECT_EQ(OpenBox()->text(), "You can change communicate settings only when communication is off");
  EXPECT_EQ(OpenBox()->standardButtons(), QMessageBox::Ok);
  EXPECT_EQ(OpenBox()->icon(), QMessageBox::NoIcon);
  EXPECT_FALSE(Find<QWidget>("ConfigComPort1").isVisible());
  EXPECT_TRUE(serial_->IsOpen());
  EXPECT_TRUE(tcp_->IsListening());
}

TEST_F(ControlTest, FramesAreAnsweredWhileAMessageBoxIsOpen) {
  CreateAndShow();
  Action("OpenComm").trigger();
  Action("Properties").trigger();
  ASSERT_NE(OpenBox(), nullptr);
  tcp_->Connect();
  tcp_->Arrive(kInit);
  EXPECT_THAT(tcp_->TakeSent(), ElementsAre("000800020000000A"));
}

TEST_F(ControlTest, TheSameTroubleAgainBringsUpNoSecondBox) {
  CreateAndShow();
  Action("OpenComm").trigger();
  Action("Properties").trigger();
  Action("Properties").trigger();
  EXPECT_EQ(control_->findChildren<QMessageBox*>().size(), 1);
}

TEST_F(ControlTest, PullingTheInterfaceTurnsThePortLabelRed) {
  settings_->user["QOR/General/CommPort"] = "NONE";
  settings_->user["QOR/Hardware/InstanceName"] = "A1";
  scout_->device_list = "<sn>A1</sn>";
  CreateAndShow();
  const auto& label = Find<ui::PortLabelBox>("lbPort");
  EXPECT_EQ(label.text(), "USB A1");
  EXPECT_EQ(label.ForeColour(), 0);
  scout_->Change("<none/>");
  EXPECT_EQ(label.ForeColour(), 255);
  EXPECT_EQ(label.palette().color(QPalette::WindowText), QColor(255, 0, 0));
  EXPECT_EQ(label.toolTip(), "Interface not plug");
}

TEST_F(ControlTest, TheSessionPropertyHandsASessionOverAndTheControlNeverClosesIt) {
  Create();
  const std::shared_ptr<viator3::Session> handed = session_;
  EXPECT_TRUE(control_->setProperty("Session", QVariant::fromValue(handed)));
  EXPECT_EQ(control_->property("Session").value<std::shared_ptr<viator3::Session>>(), handed);
  control_->show();
  control_.reset();
  EXPECT_THAT(session_->log, Not(Contains("Close")));
}

TEST_F(ControlTest, ASessionOfItsOwnIsClosedWhenTheControlGoes) {
  CreateAndShow();
  tcp_->Connect();
  tcp_->Arrive(kInit);
  EXPECT_EQ(control_->Session(), session_);
  session_->log.clear();
  control_.reset();
  EXPECT_THAT(session_->log, ElementsAre("Close", "Port="));
}

TEST_F(ControlTest, TheHostsSessionFactoryTakesThePlaceOfTheUsualOne) {
  CreateAndShow();
  const auto own = std::make_shared<FakeSession>();
  control_->SetSessionFactory([own] { return own; });
  tcp_->Connect();
  tcp_->Arrive(kInit);
  EXPECT_EQ(control_->Session(), own);
}

TEST_F(ControlTest, TheInstallationInformationIsReadByCallAndGivesAnEmptyVariant) {
  Create();
  settings_->machine = {{"QOR/DoNotUseWeb", "1"}, {"QOR/InstallFolder", "/opt/host"}};
  QVariant result = 1;
  EXPECT_TRUE(QMetaObject::invokeMethod(control_.get(), "QORGetInstallationInformation",
                                        Q_RETURN_ARG(QVariant, result)));
  EXPECT_FALSE(result.isValid());
  control_->show();
  tcp_->Connect();
  tcp_->Arrive(kInit);
  EXPECT_THAT(session_->log, Contains("ErrorsFile=/opt/host/errors.xml"));
}

TEST_F(ControlTest, MayBeDeletedInsideAWaitingCommand) {
  CreateAndShow();
  tcp_->Connect();
  session_->on_set_port = [this](const std::string& port) {
    if (!port.empty()) control_.reset();
  };
  tcp_->Arrive(kInit);
  EXPECT_EQ(control_, nullptr);
  EXPECT_THAT(tcp_->TakeSent(), IsEmpty());
}

TEST_F(ControlTest, MayBeDeletedWhileItLooksForItsInterface) {
  settings_->user["QOR/General/CommPort"] = "NONE";
  scout_->device_list = "<sn>A1</sn>";
  Create();
  control_->SetSession(session_);
  session_->on_set_port = [this](const std::string&) { control_.reset(); };
  control_->show();
  QCoreApplication::processEvents();
  EXPECT_EQ(control_, nullptr);
  EXPECT_FALSE(tcp_->IsListening());
}

TEST_F(ControlTest, MayBeDeletedWhileItOpensItsPorts) {
  const auto serial = std::make_shared<WaitingSerialPort>(log_);
  serial->on_open = [this] { control_.reset(); };
  serial_ = serial;
  Store("comAutoStart", "-1");
  tcp_->listen_failure = "port in use";
  Create();
  int failures = 0;
  QObject::connect(control_.get(), &ui::KorvAsapServer::ShowFailed, [&failures] { ++failures; });
  control_->show();
  QCoreApplication::processEvents();
  EXPECT_EQ(control_, nullptr);
  EXPECT_EQ(failures, 0) << "a control that is gone signals nothing";
}

TEST_F(ControlTest, MayBeDeletedInsideTheClickThatResetsAll) {
  CreateAndShow();
  tcp_->Connect();
  tcp_->Arrive(kInit);
  session_->on_close = [this] { control_.reset(); };
  Click(Find<QPushButton>("ResetAll"));
  EXPECT_EQ(control_, nullptr);
  EXPECT_FALSE(tcp_->HasClient());
}

TEST_F(ControlTest, ForTheFormDesignerItShowsItsFaceAndOpensNothing) {
  const std::unique_ptr<ui::KorvAsapServer> shown(ui::KorvAsapServer::ForDesigner(nullptr));
  shown->show();
  EXPECT_NE(shown->findChild<QWidget*>("txtTerm"), nullptr);
  EXPECT_EQ(shown->Session(), nullptr);
  shown->SetSession(session_);
  EXPECT_EQ(shown->Session(), nullptr);
  EXPECT_FALSE(shown->QORGetInstallationInformation().isValid());
  shown->SelectDiagInterface();
  for (auto* button : shown->findChildren<QAbstractButton*>()) button->click();
  EXPECT_EQ(shown->findChild<ui::TerminalBox*>()->toPlainText(), "");
}

TEST_F(ControlTest, RemembersColumnWidthsAndLayout) {
  CreateAndShow();
  Find<ui::RowList>("LVfile").header()->resizeSection(1, 333);
  Find<ui::RowList>("LVdata").header()->resizeSection(2, 77);
  control_.reset();
  CreateAndShow();
  EXPECT_EQ(Find<ui::RowList>("LVfile").header()->sectionSize(1), 333);
  EXPECT_EQ(Find<ui::RowList>("LVdata").header()->sectionSize(2), 77);
}

TEST_F(ControlTest, AViewThatWasStoredDamagedIsIgnored) {
  for (const char* name : {"LVfile", "LVdata", "Layout"}) {
    settings_->user[std::string("KorvalAsapServer/View/") + name] = "not base 64 \xC3\xBC";
  }
  CreateAndShow();
  EXPECT_GT(Find<ui::RowList>("LVfile").header()->sectionSize(1), 20);
}

TEST_F(ControlTest, AViewThatCannotBeStoredKeepsNobodyFromClosing) {
  CreateAndShow();
  settings_->read_only = true;
  control_.reset();
  EXPECT_FALSE(tcp_->IsListening());
  EXPECT_THAT(settings_->written, IsEmpty());
}

}  // namespace
}  // namespace korval::tests
