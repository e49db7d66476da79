// SPDX-License-Identifier: MIT
#pragma once

#include <QGroupBox>

#include "ui/DriveList.h"
#include "ui/FolderList.h"

class QLineEdit;

namespace korval::ui {

/// A frame with a drive list, a folder list and a file list for one folder, and its path to be typed.
class FolderPicker : public QGroupBox {
  Q_OBJECT

 public:
  /// `prefix` "Asap" names the frame AsapFrame and the lists AsapDrive, AsapDir and AsapFile.
  FolderPicker(const QString& prefix, const QString& title, QWidget* parent = nullptr);
  ~FolderPicker() override;

  /// Looks at which drives there are and points the lists at a folder.
  void Load(const QString& path);
  /// Points the drive list, the folder list and the file list at a folder.
  void SetPath(const QString& path);
  QString Path() const { return folders_->Path(); }

 private:
  void FollowFolder(const QString& path);
  void TakeTypedPath();

  DriveList* drives_;
  FolderList* folders_;
  FileList* files_;
  QLineEdit* path_;
};

}  // namespace korval::ui
