// SPDX-License-Identifier: MIT
// What the window says and does when nobody has chosen anything yet.
#include <chrono>
#include <optional>
#include <string>

#include <QCheckBox>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <gmock/gmock.h>

#include "WidgetTest.h"
#include "tests/support/TempFolder.h"
#include "tests/support/WaitingQtLoop.h"
#include "window/WindowedServer.h"

namespace korval::apps {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class FirstStartTest : public tests::WidgetTest {
 protected:
  FirstStartTest() {
    options_.listen = "127.0.0.1";
    options_.tcp_port = 0;
    options_.dry_run_power = true;
    options_.settings_file = folder_.Path("settings.ini");
    options_.install_record_file = folder_.Path("record.ini");
  }

  // The window is not shown, so that nothing is opened.
  void Start() { server_.emplace(options_); }
  template <typename Widget>
  Widget* Find(const char* name) {
    return server_->Window().findChild<Widget*>(QString::fromLatin1(name));
  }
  std::string TraceWith(const char* text) {
    const auto* terminal = Find<QPlainTextEdit>("txtTerm");
    tests::WaitingQtLoop loop;
    loop.RunUntil(loop.Now() + std::chrono::seconds(60),
                  [&] { return terminal->toPlainText().contains(QString::fromUtf8(text)); });
    return terminal->toPlainText().toStdString();
  }

  tests::TempFolder folder_;
  ServerOptions options_;
  std::optional<WindowedServer> server_;
};

TEST_F(FirstStartTest, TheTraceSaysThatTheSimulatedEcuAnswers) {
  Start();
  EXPECT_THAT(TraceWith("CommPort=SIM"), HasSubstr("the simulated ECU answers (General/CommPort=SIM)\n"));
}

TEST_F(FirstStartTest, AStoredPortIsKeptWithoutAWord) {
  folder_.Write("settings.ini", "[QOR]\nGeneral\\CommPort=COM3\n");
  Start();
  EXPECT_THAT(TraceWith("V1.3"), Not(HasSubstr("simulated")));
}

TEST_F(FirstStartTest, DebugTicksItsBox) {
  options_.debug = true;
  Start();
  EXPECT_TRUE(Find<QCheckBox>("Check1")->isChecked());
}

TEST_F(FirstStartTest, AnInterfaceChosenInTheMenuIsTraced) {
  Start();
  auto* menu = server_->Window().findChild<InterfaceMenu*>();
  emit menu->aboutToShow();
  menu->actions().first()->trigger();
  EXPECT_THAT(
      TraceWith("Diagnostic interface chosen"),
      HasSubstr("Diagnostic interface chosen: Simulated ECU (SIM) (from the client's next init on)\n"));
}

TEST_F(FirstStartTest, AnInterfaceThatCannotBeStoredIsNotTracedAsChosen) {
  folder_.Write("file", "");
  options_.settings_file = folder_.Path("file/settings.ini");
  Start();
  auto* menu = server_->Window().findChild<InterfaceMenu*>();
  emit menu->aboutToShow();
  menu->actions().first()->trigger();
  EXPECT_NE(server_->Window().findChild<QMessageBox*>(), nullptr);
  EXPECT_THAT(TraceWith("V1.3"), Not(HasSubstr("Diagnostic interface chosen")));
}

}  // namespace
}  // namespace korval::apps
