// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include <QString>

#include "host/settings/HostSettings.h"
#include "host/settings/SettingsStore.h"
#include "platform/PluggedInterface.h"

namespace korval::apps {

/// A diagnostic interface as it stands in the settings: General/CommPort, and for the port "NONE" the serial
/// number in Hardware/InstanceName.
struct InterfaceChoice {
  std::string port;
  std::string serial_number;

  friend bool operator==(const InterfaceChoice&, const InterfaceChoice&) = default;
};

/// A choice as the menu offers it.
struct OfferedInterface {
  InterfaceChoice choice;
  QString text;
};

/// The simulated ECU, every port that is plugged in, and every USB interface by its serial number.
std::vector<OfferedInterface> OfferedInterfaces(const std::vector<platform::PluggedInterface>& plugged);

InterfaceChoice CurrentChoice(const host::HostSettings& settings);
/// Stores the choice. Raises Failure when the store cannot be written.
void Choose(host::SettingsStore& store, const InterfaceChoice& choice);

}  // namespace korval::apps
