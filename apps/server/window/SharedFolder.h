// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace korval::apps {

/// The folder `name` of the files that come with a program in `program_folder`: that of the installation
/// (../share/korval-asap-server), else that of the build (../..). "" when there is neither.
QString SharedFolder(const QString& program_folder, const QString& name);

}  // namespace korval::apps
