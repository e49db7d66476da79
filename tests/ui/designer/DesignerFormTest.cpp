// SPDX-License-Identifier: MIT
// The same form in Qt Designer's own form editor has controls on it that only show what they look like.
#include <QFile>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtDesigner/QDesignerActionEditorInterface>
#include <QtDesigner/QDesignerComponents>
#include <QtDesigner/QDesignerFormEditorInterface>
#include <QtDesigner/QDesignerFormWindowInterface>
#include <QtDesigner/QDesignerFormWindowManagerInterface>
#include <QtDesigner/QDesignerIntegration>
#include <QtDesigner/QDesignerObjectInspectorInterface>
#include <QtDesigner/QDesignerPropertyEditorInterface>
#include <QtDesigner/QDesignerWidgetBoxInterface>

#include "tests/ui/WidgetTest.h"
#include "tests/ui/designer/Form.h"

namespace korval::tests {
namespace {

class DesignerFormTest : public WidgetTest {
 protected:
  DesignerFormTest() {
    QCoreApplication::addLibraryPath(KORVAL_PLUGINS);
    QDesignerComponents::initializeResources();
    core_.reset(QDesignerComponents::createFormEditor(nullptr));
    core_->setWidgetBox(QDesignerComponents::createWidgetBox(core_.get(), &main_window_));
    core_->setPropertyEditor(QDesignerComponents::createPropertyEditor(core_.get(), &main_window_));
    core_->setObjectInspector(QDesignerComponents::createObjectInspector(core_.get(), &main_window_));
    core_->setActionEditor(QDesignerComponents::createActionEditor(core_.get(), &main_window_));
    core_->setTopLevel(&main_window_);
    QDesignerComponents::initializePlugins(core_.get());
    new QDesignerIntegration(core_.get(), core_.get());
  }

  QDesignerFormWindowInterface& OpenForm() {
    QDesignerFormWindowInterface* window = core_->formWindowManager()->createFormWindow(&main_window_);
    EXPECT_TRUE(window->setContents(QString::fromUtf8(kForm)));
    main_window_.show();
    QCoreApplication::processEvents();
    return *window;
  }

  std::unique_ptr<QDesignerFormEditorInterface> core_;
  QWidget main_window_;  // goes first, with the form and the editor's tools
};

TEST_F(DesignerFormTest, TheControlIsShownAndOpensNothing) {
  const std::uint16_t port = StoreFreePort();
  const auto& form = OpenForm();
  const auto& control = Find<QWidget>(*form.mainContainer(), "server");
  EXPECT_TRUE(control.inherits("korval::ui::KorvAsapServer"));
  EXPECT_EQ(Find<QPlainTextEdit>(control, "txtTerm").toPlainText(), "");
  EXPECT_FALSE(IsOpen(port));
}

TEST_F(DesignerFormTest, ThePanelStoresNothing) {
  StoreFreePort();
  const auto& form = OpenForm();
  const auto& panel = Find<QWidget>(*form.mainContainer(), "panel");
  EXPECT_TRUE(panel.inherits("korval::ui::ConfigComPort"));
  Find<QPushButton>(panel, "cmdOK").click();
  QFile file(qEnvironmentVariable("XDG_CONFIG_HOME") + "/Korval/Korval.ini");
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_FALSE(file.readAll().contains("CommPort"));
}

TEST_F(DesignerFormTest, TheFormIsSavedWithNothingOfTheControlsInside) {
  const QString saved = OpenForm().contents();
  EXPECT_TRUE(saved.contains("<widget class=\"korval::ui::KorvAsapServer\" name=\"server\"/>"));
  EXPECT_FALSE(saved.contains("txtTerm"));
  EXPECT_FALSE(saved.contains("Session"));
}

}  // namespace
}  // namespace korval::tests
