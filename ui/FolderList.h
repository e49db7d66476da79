// SPDX-License-Identifier: MIT
#pragma once

#include <QListWidget>

namespace korval::ui {

/// The folder list of a picker: the folders on the way to the current one, indented, and below them the
/// folders in it. A double click or the enter key goes to one, backspace goes up.
class FolderList : public QListWidget {
  Q_OBJECT

 public:
  explicit FolderList(QWidget* parent = nullptr);

  /// The current folder, with '/'.
  QString Path() const { return path_; }
  /// Goes to a folder, also to one that does not exist.
  void SetPath(const QString& path);

 signals:
  void PathChanged(const QString& path);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  int AddWay();
  void AddInnerFolders(int depth);
  void AddFolder(const QString& name, const QString& path, int depth, bool is_open);

  QString path_;
};

/// The file list of a picker: shows the files in a folder.
class FileList : public QListWidget {
  Q_OBJECT

 public:
  explicit FileList(QWidget* parent = nullptr);

  void ShowFilesOf(const QString& path);
};

}  // namespace korval::ui
