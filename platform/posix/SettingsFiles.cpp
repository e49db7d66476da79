// SPDX-License-Identifier: MIT
#include "platform/SettingsFiles.h"

#include <QStandardPaths>

namespace korval::platform {

QString UserSettingsFile() {
  return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/Korval/Korval.ini";
}

QString MachineSettingsFile() { return "/etc/korval/korval.ini"; }

}  // namespace korval::platform
