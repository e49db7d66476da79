// SPDX-License-Identifier: MIT
#include "window/SharedFolder.h"

#include <QDir>

namespace korval::apps {

QString SharedFolder(const QString& program_folder, const QString& name) {
  for (const char* place : {"/../share/korval-asap-server/", "/../../"}) {
    QString folder = QDir::cleanPath(program_folder + QString::fromLatin1(place) + name);
    if (QDir(folder).exists()) return folder;
  }
  return {};
}

}  // namespace korval::apps
