// SPDX-License-Identifier: MIT
#include "host/settings/InstallationInformation.h"

namespace korval::host {

InstallationInformation ReadInstallationInformation(const SettingsStore& store,
                                                    InstallationInformation known) {
  known.is_local_installation = store.ReadMachineWide("QOR/DoNotUseWeb") == "1";
  if (known.is_local_installation) {
    known.install_location = store.ReadMachineWide("QOR/InstallFolder").value_or("");
    known.host_version = store.ReadMachineWide("QOR/Version").value_or("");
  } else {
    known.install_location = store.Read("QOR/General/ServerName").value_or("");
  }
  return known;
}

}  // namespace korval::host
