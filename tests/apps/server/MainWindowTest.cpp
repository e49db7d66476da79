// SPDX-License-Identifier: MIT
#include <memory>

#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <gmock/gmock.h>

#include "WidgetTest.h"
#include "tests/support/MemorySettings.h"
#include "window/MainWindow.h"

namespace korval::apps {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kPlace[] = "KorvalAsapServer/View/Window";

class MainWindowTest : public tests::WidgetTest {
 protected:
  // The control only shows what it looks like: the window's own work is what counts here.
  std::unique_ptr<MainWindow> Open() {
    auto window = std::make_unique<MainWindow>(control_ = ui::KorvAsapServer::ForDesigner(nullptr), store_,
                                               [] { return std::vector<platform::PluggedInterface>(); });
    window->show();
    return window;
  }
  static QMenu* Menu(const MainWindow& window, const char* title) {
    for (const QAction* action : window.menuBar()->actions()) {
      if (action->text() == QString::fromLatin1(title)) return action->menu();
    }
    return nullptr;
  }

  std::shared_ptr<tests::MemorySettings> store_ = std::make_shared<tests::MemorySettings>();
  QPointer<ui::KorvAsapServer> control_;
};

TEST_F(MainWindowTest, ItsPlaceIsRemembered) {
  constexpr QRect kElsewhere(40, 60, 700, 600);
  {
    const auto window = Open();
    window->setGeometry(kElsewhere);
    window->close();
  }
  EXPECT_EQ(Open()->geometry(), kElsewhere);
}

TEST_F(MainWindowTest, APlaceThatCannotBeReadIsIgnored) {
  store_->user[kPlace] = "somewhere";
  const auto window = Open();
  EXPECT_GT(window->width(), 100);
  EXPECT_GT(window->height(), 100);
}

TEST_F(MainWindowTest, AStoreThatTakesNothingKeepsNoWindowOpen) {
  store_->read_only = true;
  const auto window = Open();
  EXPECT_TRUE(window->close());
  EXPECT_FALSE(window->isVisible());
}

TEST_F(MainWindowTest, ClosingItEndsTheControlAndTheApplication) {
  const auto window = Open();
  QMetaObject::invokeMethod(window.get(), &QWidget::close, Qt::QueuedConnection);
  EXPECT_EQ(QApplication::exec(), 0);
  EXPECT_TRUE(control_.isNull());
}

TEST_F(MainWindowTest, AnOpenAboutBoxBlocksNothingAndKeepsNoApplicationRunning) {
  const auto window = Open();
  Menu(*window, "&Help")->actions().first()->trigger();
  const auto* box = window->findChild<QMessageBox*>();
  ASSERT_NE(box, nullptr);
  EXPECT_FALSE(box->isModal());
  QMetaObject::invokeMethod(window.get(), &QWidget::close, Qt::QueuedConnection);
  EXPECT_EQ(QApplication::exec(), 0);
}

TEST_F(MainWindowTest, TheServerMenuRepeatsTheToolBarAndQuits) {
  const auto window = Open();
  const QMenu* menu = Menu(*window, "&Server");
  ASSERT_NE(menu, nullptr);
  std::vector<std::string> names;
  for (const QAction* action : menu->actions()) {
    if (!action->objectName().isEmpty()) names.push_back(action->objectName().toStdString());
  }
  EXPECT_THAT(names, ElementsAre("OpenComm", "Properties"));
  menu->actions().last()->trigger();
  EXPECT_FALSE(window->isVisible());
}

TEST_F(MainWindowTest, AChoiceThatCannotBeStoredIsToldInABoxThatBlocksNothing) {
  store_->read_only = true;
  const auto window = Open();
  bool announced = false;
  QObject::connect(window.get(), &MainWindow::InterfaceChosen, [&] { announced = true; });
  auto* menu = window->findChild<InterfaceMenu*>();
  emit menu->aboutToShow();
  menu->actions().first()->trigger();
  EXPECT_FALSE(announced);
  const auto* box = window->findChild<QMessageBox*>();
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->text(), "the settings cannot be written");
  EXPECT_FALSE(box->isModal());
}

TEST_F(MainWindowTest, AChosenInterfaceIsStoredAndAnnounced) {
  const auto window = Open();
  std::vector<std::string> announced;
  QObject::connect(window.get(), &MainWindow::InterfaceChosen,
                   [&](const QString& text) { announced.push_back(text.toStdString()); });
  auto* menu = window->findChild<InterfaceMenu*>();
  emit menu->aboutToShow();
  EXPECT_THAT(announced, IsEmpty());
  menu->actions().first()->trigger();
  EXPECT_EQ(store_->Read("QOR/General/CommPort"), "SIM");
  EXPECT_THAT(announced, ElementsAre("Simulated ECU (SIM)"));
}

}  // namespace
}  // namespace korval::apps
