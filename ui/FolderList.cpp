// SPDX-License-Identifier: MIT
#include "ui/FolderList.h"

#include <QDir>
#include <QKeyEvent>
#include <QStyle>

namespace korval::ui {
namespace {

constexpr int kIndent = 2;  // blanks a step
constexpr QChar kSeparator = u'/';

void UseSmallIcons(QListWidget& list) {
  const int side = list.style()->pixelMetric(QStyle::PM_SmallIconSize);
  list.setIconSize({side, side});
}

}  // namespace

FolderList::FolderList(QWidget* parent) : QListWidget(parent) {
  UseSmallIcons(*this);
  connect(this, &QListWidget::itemActivated, this,
          [this](const QListWidgetItem* item) { SetPath(item->data(Qt::UserRole).toString()); });
}

void FolderList::SetPath(const QString& path) {
  path_ = QDir::cleanPath(QDir::fromNativeSeparators(path));
  clear();
  const int depth = AddWay();
  setCurrentRow(count() - 1);
  if (!path_.isEmpty()) AddInnerFolders(depth);
  emit PathChanged(path_);
}

// The folders from the root to the current one; returns how many.
int FolderList::AddWay() {
  int depth = 0;
  qsizetype start = 0;
  while (start < path_.size()) {
    qsizetype end = path_.indexOf(kSeparator, start);
    if (end < 0) end = path_.size();
    // A root keeps its separator: "/" and "C:/" are folders, "" and "C:" are not.
    const bool is_root = depth == 0 && end < path_.size();
    AddFolder(is_root ? path_.left(end + 1) : path_.mid(start, end - start),
              path_.left(is_root ? end + 1 : end), depth, true);
    ++depth;
    start = end + 1;
  }
  return depth;
}

void FolderList::AddInnerFolders(int depth) {
  const QDir folder(path_);
  const auto filter = QDir::Dirs | QDir::NoDotAndDotDot;
  for (const QString& name : folder.entryList(filter, QDir::Name | QDir::IgnoreCase)) {
    AddFolder(name, folder.filePath(name), depth, false);
  }
}

void FolderList::AddFolder(const QString& name, const QString& path, int depth, bool is_open) {
  const auto icon = style()->standardIcon(is_open ? QStyle::SP_DirOpenIcon : QStyle::SP_DirClosedIcon);
  auto* item = new QListWidgetItem(icon, QString(depth * kIndent, u' ') + name, this);
  item->setData(Qt::UserRole, path);
  item->setData(Qt::AccessibleTextRole, name);
}

void FolderList::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Backspace) {
    QListWidget::keyPressEvent(event);
    return;
  }
  if (!path_.isEmpty() && !QDir(path_).isRoot()) SetPath(path_ + "/..");
}

FileList::FileList(QWidget* parent) : QListWidget(parent) {
  UseSmallIcons(*this);
  // The files only show that it is the right folder.
  setSelectionMode(NoSelection);
}

void FileList::ShowFilesOf(const QString& path) {
  clear();
  if (path.isEmpty()) return;
  const auto icon = style()->standardIcon(QStyle::SP_FileIcon);
  for (const QString& name : QDir(path).entryList(QDir::Files, QDir::Name | QDir::IgnoreCase)) {
    addItem(new QListWidgetItem(icon, name));
  }
}

}  // namespace korval::ui
