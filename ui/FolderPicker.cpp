// SPDX-License-Identifier: MIT
#include "ui/FolderPicker.h"

#include <QDir>
#include <QGridLayout>
#include <QLineEdit>

namespace korval::ui {

FolderPicker::FolderPicker(const QString& prefix, const QString& title, QWidget* parent)
    : QGroupBox(title, parent),
      drives_(new DriveList),
      folders_(new FolderList),
      files_(new FileList),
      path_(new QLineEdit) {
  setObjectName(prefix + "Frame");
  drives_->setObjectName(prefix + "Drive");
  drives_->setAccessibleName(tr("%1: drive").arg(title));
  folders_->setObjectName(prefix + "Dir");
  folders_->setAccessibleName(tr("%1: folder").arg(title));
  files_->setObjectName(prefix + "File");
  files_->setAccessibleName(tr("%1: files").arg(title));
  path_->setObjectName(prefix + "Path");
  path_->setAccessibleName(tr("%1: path").arg(title));
  path_->setToolTip(tr("The folder; type another one and press Enter"));

  auto* grid = new QGridLayout(this);
  grid->addWidget(path_, 0, 0, 1, 2);
  grid->addWidget(drives_, 1, 0);
  grid->addWidget(folders_, 2, 0);
  grid->addWidget(files_, 1, 1, 2, 1);
  grid->setColumnStretch(0, 1);
  grid->setColumnStretch(1, 1);

  connect(drives_, &DriveList::DriveChosen, this, &FolderPicker::SetPath);
  connect(folders_, &FolderList::PathChanged, this, &FolderPicker::FollowFolder);
  connect(path_, &QLineEdit::editingFinished, this, &FolderPicker::TakeTypedPath);
}

// A text box that has the focus when it goes reports the end of editing, to a picker of which little is left.
FolderPicker::~FolderPicker() { path_->disconnect(this); }

void FolderPicker::Load(const QString& path) {
  drives_->Fill();
  SetPath(path);
}

void FolderPicker::SetPath(const QString& path) { folders_->SetPath(path); }

void FolderPicker::FollowFolder(const QString& path) {
  drives_->ShowDriveOf(path);
  files_->ShowFilesOf(path);
  path_->setText(QDir::toNativeSeparators(path));
}

// A path that is no folder is put back.
void FolderPicker::TakeTypedPath() {
  const QString typed = QDir::fromNativeSeparators(path_->text());
  if (typed == Path()) return;
  SetPath(QDir::isAbsolutePath(typed) && QDir(typed).exists() ? typed : Path());
}

}  // namespace korval::ui
