// SPDX-License-Identifier: MIT
#include "ui/DriveList.h"

#include <QDir>
#include <QStorageInfo>

namespace korval::ui {
namespace {

bool IsForPeople(const QStorageInfo& volume) {
  const QString root = volume.rootPath();
  return volume.isReady() && (root.startsWith("/media/") || root.startsWith("/mnt") ||
                              root.startsWith("/run/media/") || root.startsWith("/Volumes/"));
}

bool Holds(const QString& folder, const QString& path) {
  return path == folder || folder.endsWith(QLatin1Char('/')) ? path.startsWith(folder)
                                                             : path.startsWith(folder + QLatin1Char('/'));
}

}  // namespace

DriveList::DriveList(QWidget* parent) : QComboBox(parent) {
  connect(this, &QComboBox::activated, this,
          [this](int index) { emit DriveChosen(itemData(index).toString()); });
}

void DriveList::Fill() {
  clear();
  for (const QFileInfo& drive : QDir::drives()) {
    addItem(QDir::toNativeSeparators(drive.absolutePath()), drive.absolutePath());
  }
  addItem(tr("Home (%1)").arg(QDir::toNativeSeparators(QDir::homePath())), QDir::homePath());
  for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
    if (IsForPeople(volume)) addItem(volume.displayName(), volume.rootPath());
  }
}

void DriveList::ShowDriveOf(const QString& path) {
  int best = -1;
  qsizetype longest = 0;
  for (int i = 0; i < count(); ++i) {
    const QString folder = itemData(i).toString();
    if (!Holds(folder, path) || folder.size() <= longest) continue;
    best = i;
    longest = folder.size();
  }
  setCurrentIndex(best);
}

}  // namespace korval::ui
