// SPDX-License-Identifier: MIT
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#include "host/control/PanelValues.h"
#include "tests/support/FakePower.h"
#include "tests/support/MemorySettings.h"
#include "tests/ui/WidgetTest.h"
#include "ui/ConfigComPort.h"
#include "ui/FolderPicker.h"

namespace korval::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

QStringList Texts(const QComboBox& list) {
  QStringList texts;
  for (int i = 0; i < list.count(); ++i) texts << list.itemText(i);
  return texts;
}

class PanelTest : public WidgetTest {
 protected:
  PanelTest() {
    for (const char* name : {"asap", "ecu", "other"}) QDir(folder_.path()).mkdir(name);
    QObject::connect(&panel_, &ui::ConfigComPort::ValueChanged,
                     [this](bool& cancelled) { ended_.push_back(cancelled); });
    panel_.resize(900, 600);
  }

  void Load(const QString& setting) {
    panel_.SetValue(setting, 2, 0, 0, 1001, Folder("asap"), Folder("ecu"));
  }
  QString Folder(const char* name) const { return folder_.filePath(QString::fromLatin1(name)); }
  QComboBox& List(const char* name) const { return Find<QComboBox>(panel_, name); }
  QLineEdit& TcpPort() const { return Find<QLineEdit>(panel_, "txportip"); }
  QRadioButton& Flow(int code) const {
    return Find<QRadioButton>(panel_, qPrintable("optFlow" + QString::number(code)));
  }
  void Ok() { Find<QPushButton>(panel_, "cmdOK").click(); }
  void Cancel() { Find<QPushButton>(panel_, "cmdCancel").click(); }
  std::string Stored(const std::string& key) { return store_->user["KorvalAsapServer/Properties/" + key]; }

  QTemporaryDir folder_;
  CallLog log_;
  std::shared_ptr<MemorySettings> store_ = std::make_shared<MemorySettings>();
  ui::ConfigComPort panel_{store_, std::make_shared<FakeMessageBox>(log_), nullptr};
  std::vector<bool> ended_;
};

TEST_F(PanelTest, HasItsFramesAndLabelsUnderTheirNamesWithTheirCaptions) {
  EXPECT_EQ(Find<QGroupBox>(panel_, "FrCom").title(), "Communication Port Settings");
  EXPECT_EQ(Find<QGroupBox>(panel_, "Frame1").title(), "Maximum Speed");
  EXPECT_EQ(Find<QGroupBox>(panel_, "fraConnection").title(), "Connection Preferences");
  EXPECT_EQ(Find<QGroupBox>(panel_, "Frame5").title(), "&Flow Control");
  EXPECT_EQ(Find<QGroupBox>(panel_, "Frame2").title(), "TCPIP");
  EXPECT_EQ(Find<QGroupBox>(panel_, "AsapFrame").title(), "FOLDER for Korval to Asap configuration files");
  EXPECT_EQ(Find<QGroupBox>(panel_, "KorvFrame").title(), "Folder for Korval ECU files");
  EXPECT_EQ(Find<QLabel>(panel_, "Label1").text(), "Port:");
  EXPECT_EQ(Find<QLabel>(panel_, "Label2").text(), "Port number");
  EXPECT_EQ(Find<QCheckBox>(panel_, "ck_opencom").text(), "Open when server start");
  EXPECT_EQ(Find<QPushButton>(panel_, "cmdOK").text(), "OK");
  EXPECT_EQ(Find<QPushButton>(panel_, "cmdCancel").text(), "Cancel");
  const auto& tab = Find<QTabWidget>(panel_, "tabSettings");
  EXPECT_EQ(tab.count(), 1);
  EXPECT_EQ(tab.tabText(0), "Properties");
  for (const char* name : {"AsapDrive", "AsapDir", "AsapFile", "KorvDrive", "KorvDir", "KorvFile"}) {
    Find<QWidget>(panel_, name);
  }
}

TEST_F(PanelTest, OffersEveryChoiceInItsOrder) {
  EXPECT_EQ(Texts(List("cboPort")),
            QStringList({"Com1", "Com2", "Com3", "Com4", "Com5", "Com6", "Com7", "Com8", "Com9", "Com10",
                         "Com11", "Com12", "Com13", "Com14", "Com15", "Com16"}));
  EXPECT_EQ(Texts(List("cboSpeed")),
            QStringList({"110", "300", "600", "1200", "2400", "4800", "9600", "14400", "19200", "28800",
                         "38400", "56000", "57600", "115200", "128000", "256000"}));
  EXPECT_EQ(Texts(List("cboDataBits")), QStringList({"4", "5", "6", "7", "8"}));
  EXPECT_EQ(Texts(List("cboParity")), QStringList({"Even", "Odd", "None", "Mark", "Space"}));
  EXPECT_EQ(Texts(List("cboStopBits")), QStringList({"1", "1.5", "2"}));
  EXPECT_EQ(Flow(0).text(), "None");
  EXPECT_EQ(Flow(1).text(), "Xon/Xoff");
  EXPECT_EQ(Flow(2).text(), "RTS");
  EXPECT_EQ(Flow(3).text(), "Xon/RTS");
  EXPECT_EQ(TcpPort().text(), "1001");
}

TEST_F(PanelTest, WhereToListenAndWhomToLetInIsEditedAndSaved) {
  auto& listen = Find<QLineEdit>(panel_, "txlisten");
  auto& allow = Find<QLineEdit>(panel_, "txallow");
  EXPECT_EQ(listen.placeholderText(), "all addresses");
  EXPECT_EQ(allow.placeholderText(), "every client");
  Load("9600,n,8,1");
  listen.setText("127.0.0.1");
  allow.setText("192.168.4.0/24, 127.0.0.1");
  Ok();
  EXPECT_THAT(ended_, ElementsAre(false));
  EXPECT_EQ(panel_.Values().listen, "127.0.0.1");
  EXPECT_EQ(panel_.Values().allow, "192.168.4.0/24, 127.0.0.1");
  EXPECT_EQ(Stored("Listen"), "127.0.0.1");
  EXPECT_EQ(Stored("Allow"), "192.168.4.0/24, 127.0.0.1");
}

TEST_F(PanelTest, MistypedClientsAreRefusedWithTheirBadPart) {
  Load("9600,n,8,1");
  Find<QLineEdit>(panel_, "txallow").setText("127.0.0.1, 192.168.4/24");
  Ok();
  EXPECT_THAT(ended_, IsEmpty());
  EXPECT_THAT(log_, ElementsAre(::testing::HasSubstr("'192.168.4/24' is no IP address of allowed clients")));
  EXPECT_THAT(store_->written, IsEmpty());
}

TEST_F(PanelTest, ShowsTheStoredClientsAndLeavesThemAtAnOkWithoutAnEdit) {
  store_->user = {{"KorvalAsapServer/Properties/Allow", "192.168.4.0/24"}};
  ui::ConfigComPort panel(store_, std::make_shared<FakeMessageBox>(log_), nullptr);
  EXPECT_EQ(Find<QLineEdit>(panel, "txallow").text(), "192.168.4.0/24");
  panel.SetValue("9600,n,8,1", 2, 0, 0, 1001, Folder("asap"), Folder("ecu"));
  EXPECT_EQ(Find<QLineEdit>(panel, "txallow").text(), "192.168.4.0/24");
  Find<QPushButton>(panel, "cmdOK").click();
  EXPECT_EQ(Stored("Allow"), "192.168.4.0/24");
}

TEST_F(PanelTest, LoadingTheListsAgainDoesNotDoubleThem) {
  EXPECT_TRUE(QMetaObject::invokeMethod(&panel_, "LoadPropertySettings"));
  EXPECT_EQ(List("cboPort").count(), 16);
  EXPECT_EQ(List("cboParity").count(), 5);
}

TEST_F(PanelTest, SetValueShowsEveryValue) {
  EXPECT_TRUE(QMetaObject::invokeMethod(&panel_, "SetValue", Q_ARG(QString, "19200,n,8,1.5"), Q_ARG(int, 4),
                                        Q_ARG(int, 2), Q_ARG(int, -1), Q_ARG(int, 2345),
                                        Q_ARG(QString, Folder("asap")), Q_ARG(QString, Folder("ecu"))));
  EXPECT_EQ(List("cboSpeed").currentText(), "19200");
  EXPECT_EQ(List("cboParity").currentText(), "None");
  EXPECT_EQ(List("cboDataBits").currentText(), "8");
  EXPECT_EQ(List("cboStopBits").currentText(), "1.5");
  EXPECT_EQ(List("cboPort").currentText(), "Com4");
  EXPECT_TRUE(Flow(2).isChecked());
  EXPECT_TRUE(Find<QCheckBox>(panel_, "ck_opencom").isChecked());
  EXPECT_EQ(TcpPort().text(), "2345");
  EXPECT_EQ(panel_.AsapFolder(), Folder("asap"));
  EXPECT_EQ(panel_.KorvFolder(), Folder("ecu"));
}

TEST_F(PanelTest, AnUpperCaseParityLetterLeavesTheListAsItIs) {
  Load("9600,o,8,1");
  Load("9600,N,8,1");
  EXPECT_EQ(List("cboParity").currentText(), "Odd");
}

TEST_F(PanelTest, ASpeedAndAPortBeyondTheListsJoinThem) {
  panel_.SetValue("31250,n,8,1", 20, 0, 0, 1001, Folder("asap"), Folder("ecu"));
  EXPECT_EQ(List("cboSpeed").currentText(), "31250");
  EXPECT_EQ(List("cboPort").currentText(), "Com20");
}

TEST_F(PanelTest, OkTakesWhatAPersonChoseSavesItAndTellsSo) {
  Load("9600,n,8,1");
  List("cboSpeed").setCurrentText("115200");
  List("cboParity").setCurrentText("Even");
  List("cboDataBits").setCurrentText("7");
  List("cboStopBits").setCurrentText("2");
  List("cboPort").setCurrentText("Com16");
  Flow(3).click();
  Find<QCheckBox>(panel_, "ck_opencom").click();
  TcpPort().setText("4711");
  Ok();
  EXPECT_THAT(ended_, ElementsAre(false));
  EXPECT_EQ(panel_.Setting(), "115200,E,7,2");
  EXPECT_EQ(panel_.CommPort(), 16);
  EXPECT_EQ(panel_.Handshaking(), 3);
  EXPECT_EQ(panel_.ComAutoOpen(), -1);
  EXPECT_EQ(panel_.TcpIpPort(), 4711);
  EXPECT_EQ(Stored("Settings"), "115200,E,7,2");
  EXPECT_EQ(Stored("CommPort"), "16");
  EXPECT_EQ(Stored("Handshaking"), "3");
  EXPECT_EQ(Stored("comAutoStart"), "-1");
  EXPECT_EQ(Stored("tcpipPort"), "4711");
  EXPECT_EQ(Stored("AsapFolder"), Folder("asap").toStdString());
  EXPECT_EQ(Stored("KorvFolder"), Folder("ecu").toStdString());
}

TEST_F(PanelTest, APortTextThatIsNoNumberKeepsThePortAndStillSaves) {
  panel_.SetValue("9600,n,8,1", 2, 0, 0, 2345, Folder("asap"), Folder("ecu"));
  TcpPort().setText("abc");
  Ok();
  EXPECT_THAT(ended_, ElementsAre(false));
  EXPECT_EQ(panel_.TcpIpPort(), 2345);
  EXPECT_EQ(Stored("tcpipPort"), "2345");
  EXPECT_THAT(log_, IsEmpty());
}

TEST_F(PanelTest, CancelAndTheEscapeKeySaveNothing) {
  Load("9600,n,8,1");
  Show(panel_);
  List("cboSpeed").setCurrentText("300");
  Cancel();
  QTest::keyClick(&panel_, Qt::Key_Escape);
  EXPECT_THAT(ended_, ElementsAre(true, true));
  EXPECT_THAT(store_->written, IsEmpty());
  EXPECT_EQ(panel_.Setting(), "9600,n,8,1");
}

TEST_F(PanelTest, ASettingsStoreThatRefusesIsToldAfterTheEnd) {
  Load("9600,n,8,1");
  store_->read_only = true;
  Ok();
  EXPECT_THAT(ended_, ElementsAre(false));
  EXPECT_THAT(log_, ElementsAre("box the settings cannot be written"));
}

TEST_F(PanelTest, MayBeDeletedByWhoeverIsToldOfTheEnd) {
  auto* panel = new ui::ConfigComPort(store_, std::make_shared<FakeMessageBox>(log_), nullptr);
  panel->SetValue("9600,n,8,1", 2, 0, 0, 1001, Folder("asap"), Folder("ecu"));
  QObject::connect(panel, &ui::ConfigComPort::ValueChanged, [panel] { panel->deleteLater(); });
  store_->read_only = true;
  panel->findChild<QPushButton*>("cmdOK")->click();
  QCoreApplication::sendPostedEvents(panel, QEvent::DeferredDelete);
  EXPECT_THAT(log_, ElementsAre("box the settings cannot be written"));
}

TEST_F(PanelTest, ThePropertiesCanBeSetFromOutside) {
  EXPECT_TRUE(panel_.setProperty("Setting", "300,n,8,1"));
  EXPECT_TRUE(panel_.setProperty("CommPort", 7));
  EXPECT_TRUE(panel_.setProperty("Handshaking", 1));
  EXPECT_TRUE(panel_.setProperty("TcpIpPort", 99));
  EXPECT_TRUE(panel_.setProperty("ComAutoOpen", 1));
  EXPECT_TRUE(panel_.setProperty("AsapFolder", Folder("other")));
  EXPECT_TRUE(panel_.setProperty("KorvFolder", Folder("ecu")));
  EXPECT_EQ(panel_.property("Setting"), "300,n,8,1");
  EXPECT_EQ(panel_.property("CommPort"), 7);
  EXPECT_EQ(panel_.property("Handshaking"), 1);
  EXPECT_EQ(panel_.property("TcpIpPort"), 99);
  EXPECT_EQ(panel_.property("ComAutoOpen"), -1);
  EXPECT_EQ(panel_.property("AsapFolder"), Folder("other"));
  EXPECT_EQ(panel_.property("KorvFolder"), Folder("ecu"));
}

TEST_F(PanelTest, ForTheFormDesignerItSavesNothing) {
  const std::unique_ptr<ui::ConfigComPort> panel(ui::ConfigComPort::ForDesigner(nullptr));
  QObject::connect(panel.get(), &ui::ConfigComPort::ValueChanged,
                   [this](bool& cancelled) { ended_.push_back(cancelled); });
  panel->findChild<QPushButton*>("cmdOK")->click();
  EXPECT_THAT(ended_, ElementsAre(false));
  EXPECT_THAT(store_->written, IsEmpty());
}

class FolderPickerTest : public WidgetTest {
 protected:
  FolderPickerTest() {
    QDir root(folder_.path());
    root.mkpath("maps/engine");
    root.mkpath("maps/Abs");
    for (const char* name : {"maps/b.xml", "maps/A.xml", "maps/engine/inner.xml"}) {
      QFile file(root.filePath(QString::fromLatin1(name)));
      EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }
    picker_.resize(500, 400);
    picker_.Load(Maps());
  }

  QString Maps() const { return folder_.filePath("maps"); }
  ui::FolderList& Folders() const { return Find<ui::FolderList>(picker_, "AsapDir"); }
  QStringList Files() const {
    const auto& list = Find<QListWidget>(picker_, "AsapFile");
    QStringList names;
    for (int i = 0; i < list.count(); ++i) names << list.item(i)->text();
    return names;
  }
  // The folders below the current one, without what leads to it.
  QStringList InnerFolders() const {
    QStringList names;
    for (int i = Folders().currentRow() + 1; i < Folders().count(); ++i) {
      names << Folders().item(i)->text().trimmed();
    }
    return names;
  }
  void Open(const QString& name) {
    for (int i = Folders().currentRow() + 1; i < Folders().count(); ++i) {
      if (Folders().item(i)->text().trimmed() != name) continue;
      Folders().setCurrentRow(i);
      QTest::keyClick(&Folders(), Qt::Key_Return);
      return;
    }
    FAIL() << "there is no folder " << name.toStdString();
  }

  QTemporaryDir folder_;
  ui::FolderPicker picker_{"Asap", "FOLDER for Korval to Asap configuration files"};
};

TEST_F(FolderPickerTest, ShowsTheFoldersAndFilesOfItsFolder) {
  EXPECT_EQ(picker_.Path(), Maps());
  EXPECT_EQ(InnerFolders(), QStringList({"Abs", "engine"}));
  EXPECT_EQ(Files(), QStringList({"A.xml", "b.xml"}));
  EXPECT_EQ(Find<QLineEdit>(picker_, "AsapPath").text(), Maps());
}

TEST_F(FolderPickerTest, ShowsTheWayToItsFolderFromTheRoot) {
  EXPECT_EQ(Folders().item(0)->text(), "/");
  EXPECT_EQ(Folders().currentItem()->text().trimmed(), "maps");
}

TEST_F(FolderPickerTest, TheEnterKeyOpensAFolderAndTheFileListFollows) {
  Show(picker_);
  Open("engine");
  EXPECT_EQ(picker_.Path(), Maps() + "/engine");
  EXPECT_EQ(Files(), QStringList({"inner.xml"}));
}

TEST_F(FolderPickerTest, BackspaceGoesUpAndStopsAtTheRoot) {
  Show(picker_);
  QTest::keyClick(&Folders(), Qt::Key_Backspace);
  EXPECT_EQ(picker_.Path(), folder_.path());
  for (int i = 0; i < 20; ++i) QTest::keyClick(&Folders(), Qt::Key_Backspace);
  EXPECT_EQ(picker_.Path(), "/");
}

TEST_F(FolderPickerTest, ADriveThatIsChosenPointsTheListsAtIt) {
  auto& drives = Find<QComboBox>(picker_, "AsapDrive");
  const int home = drives.findData(QDir::homePath());
  ASSERT_GE(home, 0);
  drives.setCurrentIndex(home);
  emit drives.activated(home);
  EXPECT_EQ(picker_.Path(), QDir::homePath());
}

TEST_F(FolderPickerTest, TheDriveListShowsTheDriveOfTheFolder) {
  auto& drives = Find<QComboBox>(picker_, "AsapDrive");
  picker_.SetPath(QDir::homePath());
  EXPECT_EQ(drives.currentData(), QDir::homePath());
  picker_.SetPath("/usr");
  EXPECT_EQ(drives.currentData(), "/");
}

TEST_F(FolderPickerTest, TheDrivesAreLookedForWhenItIsLoadedAndNotAtEveryStep) {
  auto& drives = Find<QComboBox>(picker_, "AsapDrive");
  drives.addItem("added", "/added");
  picker_.SetPath("/usr");
  EXPECT_GE(drives.findData("/added"), 0);
  picker_.Load("/usr");
  EXPECT_LT(drives.findData("/added"), 0);
  EXPECT_EQ(drives.currentData(), "/");
}

TEST_F(FolderPickerTest, APathCanBeTypedAndOneThatIsNoFolderIsPutBack) {
  auto& path = Find<QLineEdit>(picker_, "AsapPath");
  path.setText(folder_.path());
  emit path.editingFinished();
  EXPECT_EQ(picker_.Path(), folder_.path());
  path.setText(folder_.path() + "/no such folder");
  emit path.editingFinished();
  EXPECT_EQ(picker_.Path(), folder_.path());
  EXPECT_EQ(path.text(), folder_.path());
}

TEST_F(FolderPickerTest, MayGoWhileAPathIsTyped) {
  auto* picker = new ui::FolderPicker("Korv", "Folder for Korval ECU files");
  Show(*picker);
  picker->findChild<QLineEdit*>("KorvPath")->setFocus();
  QTest::keyClicks(picker->findChild<QLineEdit*>("KorvPath"), "/half");
  const QPointer<ui::FolderList> folders = picker->findChild<ui::FolderList*>();
  delete picker;
  EXPECT_TRUE(folders.isNull());
}

TEST_F(FolderPickerTest, AFolderThatIsGoneIsShownAsItIsWithNothingInIt) {
  picker_.SetPath("/gone/away");
  EXPECT_EQ(picker_.Path(), "/gone/away");
  EXPECT_EQ(Files(), QStringList());
  EXPECT_EQ(InnerFolders(), QStringList());
}

TEST_F(FolderPickerTest, NoFolderAtAllIsShownAsNone) {
  picker_.SetPath("");
  EXPECT_EQ(picker_.Path(), "");
  EXPECT_EQ(Folders().count(), 0);
  EXPECT_EQ(Files(), QStringList());
}

}  // namespace
}  // namespace korval::tests
