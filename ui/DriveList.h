// SPDX-License-Identifier: MIT
#pragma once

#include <QComboBox>

namespace korval::ui {

/// The places where folders begin: drives on Windows; elsewhere the root, the home folder and what is
/// mounted for people.
class DriveList : public QComboBox {
  Q_OBJECT

 public:
  explicit DriveList(QWidget* parent = nullptr);

  /// Selects the place that holds `path`.
  void ShowDriveOf(const QString& path);

 signals:
  /// The person at the console chose a place; gives its folder.
  void DriveChosen(const QString& path);

 private:
  void Fill();
};

}  // namespace korval::ui
