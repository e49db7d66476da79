// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include <QString>
#include <QStringList>

namespace korval::platform {

/// A diagnostic interface, or what may be one, as the computer sees it.
struct PluggedInterface {
  /// What stands for it as diagnostic port: "/dev/ttyUSB0", "COM3", "CAN:socketcan:can0".
  std::string port;
  /// What its maker calls it, "" when it does not say.
  std::string description;
  /// Serial number of its USB device, "" when it has none.
  std::string serial_number;

  friend bool operator==(const PluggedInterface&, const PluggedInterface&) = default;
};

/// The serial ports that have a device, in the order of their names, then the CAN interfaces. The latter are
/// read from `class_folder`, where Linux shows its devices. Takes some 10 ms, during which nothing is
/// answered.
std::vector<PluggedInterface> ScanInterfaces(const QString& class_folder = "/sys/class");

/// Those of them that have a serial number. Takes some 10 ms where a serial adapter is plugged in, else well
/// below 1 ms.
std::vector<PluggedInterface> ScanNumberedInterfaces(const QString& class_folder = "/sys/class");

/// `interfaces` without those whose port is the device `path`, whatever link or name either goes by.
std::vector<PluggedInterface> WithoutDevice(std::vector<PluggedInterface> interfaces,
                                            const std::string& path);

/// The names of everything that a scan would look at; they change when an interface is plugged in or pulled.
/// Takes well below 1 ms.
QStringList InterfaceNames(const QString& class_folder = "/sys/class");

}  // namespace korval::platform
