// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "host/settings/SettingsStore.h"

namespace korval::host {

/// Where and which the host application is, as `QORGetInstallationInformation` finds it.
struct InstallationInformation {
  std::string install_location;
  bool is_local_installation = false;
  std::string host_version;

  friend bool operator==(const InstallationInformation&, const InstallationInformation&) = default;
};

/// Reads the machine-wide record of a local installation, or else the server's location from the host
/// application's per-user settings. A version that is not read stays as in `known`.
InstallationInformation ReadInstallationInformation(const SettingsStore& store,
                                                    InstallationInformation known = {});

}  // namespace korval::host
