// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include <QMenu>

#include "host/settings/SettingsStore.h"
#include "window/InterfaceChoice.h"

class QActionGroup;

namespace korval::apps {

/// The menu that chooses the diagnostic interface. It looks at what is plugged in whenever it opens.
class InterfaceMenu : public QMenu {
  Q_OBJECT

 public:
  using Scan = std::function<std::vector<platform::PluggedInterface>()>;

  InterfaceMenu(std::shared_ptr<host::SettingsStore> store, Scan scan, QWidget* parent);

 signals:
  /// The choice was stored; gives what the menu calls it.
  void Chosen(const QString& text);
  /// The choice could not be stored; gives the reason.
  void NotStored(const QString& reason);

 private:
  void Rebuild();
  void AddChoice(const OfferedInterface& offered, const InterfaceChoice& current);
  void AskForPort();
  void Store(const InterfaceChoice& choice, const QString& text);

  std::shared_ptr<host::SettingsStore> store_;
  Scan scan_;
  QActionGroup* group_;
};

}  // namespace korval::apps
