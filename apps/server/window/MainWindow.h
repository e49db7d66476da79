// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include <QMainWindow>

#include "host/settings/SettingsStore.h"
#include "ui/KorvAsapServer.h"
#include "window/InterfaceMenu.h"

namespace korval::apps {

/// The host application's form with the control on it. Remembers where it stood. Closing it ends the control
/// and the application.
class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  /// Takes the control over.
  MainWindow(ui::KorvAsapServer* control, std::shared_ptr<host::SettingsStore> store,
             const InterfaceMenu::Scan& scan);

 signals:
  /// The person chose another diagnostic interface; gives what the menu calls it.
  void InterfaceChosen(const QString& text);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void AddServerMenu();
  void AddInterfaceMenu(const InterfaceMenu::Scan& scan);
  void AddHelpMenu();
  void ShowAbout();
  void RestorePlace();
  void KeepPlace();

  ui::KorvAsapServer* control_;  // null once the window was closed
  std::shared_ptr<host::SettingsStore> store_;
};

}  // namespace korval::apps
