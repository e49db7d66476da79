// SPDX-License-Identifier: MIT
#include "window/InterfaceMenu.h"

#include <algorithm>
#include <utility>

#include <QActionGroup>
#include <QInputDialog>

#include "base/Failure.h"

namespace korval::apps {

InterfaceMenu::InterfaceMenu(std::shared_ptr<host::SettingsStore> store, Scan scan, QWidget* parent)
    : QMenu(tr("&Diagnostic interface"), parent),
      store_(std::move(store)),
      scan_(std::move(scan)),
      group_(new QActionGroup(this)) {
  setObjectName("interfaceMenu");
  connect(this, &QMenu::aboutToShow, this, &InterfaceMenu::Rebuild);
}

void InterfaceMenu::Rebuild() {
  clear();
  const InterfaceChoice current = CurrentChoice(host::HostSettings(*store_));
  const auto offered = OfferedInterfaces(scan_());
  for (const auto& choice : offered) AddChoice(choice, current);
  const bool is_offered = std::any_of(offered.begin(), offered.end(),
                                      [&](const auto& choice) { return choice.choice == current; });
  if (!is_offered && !current.port.empty()) {
    AddChoice(
        {current, tr("%1 (not plugged in)")
                      .arg(QString::fromStdString(current.port + " " + current.serial_number).trimmed())},
        current);
  }
  addSeparator();
  addAction(tr("&Other port..."), this, &InterfaceMenu::AskForPort);
}

void InterfaceMenu::AddChoice(const OfferedInterface& offered, const InterfaceChoice& current) {
  // An ampersand in a device's name is no mnemonic.
  QAction* action = addAction(QString(offered.text).replace(u'&', QStringLiteral("&&")));
  action->setCheckable(true);
  action->setChecked(offered.choice == current);
  group_->addAction(action);
  connect(action, &QAction::triggered, this, [this, offered] { Store(offered.choice, offered.text); });
}

void InterfaceMenu::AskForPort() {
  auto* dialog = new QInputDialog(parentWidget());
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowTitle(tr("Diagnostic interface"));
  dialog->setLabelText(tr("Port, for example SIM, COM3, /dev/ttyUSB0 or CAN:socketcan:can0:"));
  dialog->setTextValue(QString::fromStdString(CurrentChoice(host::HostSettings(*store_)).port));
  connect(dialog, &QInputDialog::textValueSelected, this, [this](const QString& text) {
    const QString port = text.trimmed();
    if (!port.isEmpty()) Store({port.toStdString(), ""}, port);
  });
  dialog->show();
}

void InterfaceMenu::Store(const InterfaceChoice& choice, const QString& text) {
  try {
    Choose(*store_, choice);
  } catch (const base::Failure& failure) {
    emit NotStored(QString::fromStdString(failure.Description()));
    return;
  }
  emit Chosen(text);
}

}  // namespace korval::apps
