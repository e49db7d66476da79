// SPDX-License-Identifier: MIT
#pragma once

#include <array>

#include <QStatusBar>

class QLabel;

namespace korval::ui {

/// The status bar with its four panels (`sbrStatus`).
class StatusPanels : public QStatusBar {
  Q_OBJECT

 public:
  explicit StatusPanels(QWidget* parent = nullptr);

  /// `key` is "Status", "Settings", "timeout" or "ConnectTime"; another one does nothing.
  void ShowPanel(const QString& key, const QString& text);
  QString PanelText(const QString& key) const;

 private:
  QLabel* Panel(const QString& key) const;

  std::array<QLabel*, 4> panels_{};
};

}  // namespace korval::ui
