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

  /// Looks at which places there are. A mount that does not answer holds the caller up, so this is not done
  /// at every step from folder to folder.
  void Fill();
  /// Selects the place that holds `path`.
  void ShowDriveOf(const QString& path);

 signals:
  /// The person at the console chose a place; gives its folder.
  void DriveChosen(const QString& path);
};

}  // namespace korval::ui
