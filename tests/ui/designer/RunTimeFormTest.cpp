// SPDX-License-Identifier: MIT
// A form that is loaded at run time has the working control on it.
#include <QBuffer>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QUiLoader>

#include "tests/ui/WidgetTest.h"
#include "tests/ui/designer/Form.h"

namespace korval::tests {
namespace {

class RunTimeFormTest : public WidgetTest {
 protected:
  std::unique_ptr<QWidget> LoadForm() {
    QCoreApplication::addLibraryPath(KORVAL_PLUGINS);
    QUiLoader loader;
    QBuffer form;
    form.setData(kForm);
    form.open(QIODevice::ReadOnly);
    std::unique_ptr<QWidget> loaded(loader.load(&form));
    EXPECT_NE(loaded, nullptr) << loader.errorString().toStdString();
    return loaded;
  }
};

TEST_F(RunTimeFormTest, TheControlReadsItsSettingsAndListensWhenItIsShown) {
  const std::uint16_t port = StoreFreePort();
  const auto form = LoadForm();
  ASSERT_TRUE(Find<QWidget>(*form, "server").inherits("korval::ui::KorvAsapServer"));
  EXPECT_FALSE(IsOpen(port)) << "nothing opens before the form is shown";
  Show(*form);
  EXPECT_TRUE(IsOpen(port));
  auto& terminal = Find<QPlainTextEdit>(*form, "txtTerm");
  EXPECT_TRUE(RunUntil([&] { return terminal.toPlainText().startsWith("Korval Asap server V1.3.0.5\n"); }));
}

TEST_F(RunTimeFormTest, ThePanelStoresWhatIsEdited) {
  StoreFreePort();
  const auto form = LoadForm();
  auto& panel = Find<QWidget>(*form, "panel");
  ASSERT_TRUE(panel.inherits("korval::ui::ConfigComPort"));
  QMetaObject::invokeMethod(&panel, "SetValue", Q_ARG(QString, "300,e,7,2"), Q_ARG(int, 3), Q_ARG(int, 0),
                            Q_ARG(int, 0), Q_ARG(int, 4711), Q_ARG(QString, "/usr"), Q_ARG(QString, "/usr"));
  Find<QPushButton>(panel, "cmdOK").click();
  QFile file(qEnvironmentVariable("XDG_CONFIG_HOME") + "/Korval/Korval.ini");
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_TRUE(file.readAll().contains("Properties\\tcpipPort=4711\n"));
}

}  // namespace
}  // namespace korval::tests
