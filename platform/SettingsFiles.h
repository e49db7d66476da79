// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace korval::platform {

// Where settings are when nobody names a file. Each operating system has a file of its own for this.

/// The per-user store.
QString UserSettingsFile();
/// The machine-wide installation record.
QString MachineSettingsFile();

}  // namespace korval::platform
