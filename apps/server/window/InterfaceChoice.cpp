// SPDX-License-Identifier: MIT
#include "window/InterfaceChoice.h"

#include <QCoreApplication>

namespace korval::apps {
namespace {

constexpr char kUsbPort[] = "NONE";

QString Translated(const char* text) {
  return QCoreApplication::translate("korval::apps::InterfaceMenu", text);
}

QString WithDescription(const std::string& name, const std::string& description) {
  const QString text = QString::fromStdString(name);
  return description.empty() ? text : text + " - " + QString::fromStdString(description);
}

}  // namespace

std::vector<OfferedInterface> OfferedInterfaces(const std::vector<platform::PluggedInterface>& plugged) {
  std::vector<OfferedInterface> offered{
      {{"SIM", ""}, Translated(QT_TRANSLATE_NOOP("korval::apps::InterfaceMenu", "Simulated ECU (SIM)"))}};
  for (const auto& device : plugged) {
    offered.push_back({{device.port, ""}, WithDescription(device.port, device.description)});
  }
  for (const auto& device : plugged) {
    if (device.serial_number.empty()) continue;
    offered.push_back({{kUsbPort, device.serial_number},
                       WithDescription("USB " + device.serial_number, device.description)});
  }
  return offered;
}

InterfaceChoice CurrentChoice(const host::HostSettings& settings) {
  InterfaceChoice choice{settings.RegGetValue("General", "CommPort", ""), ""};
  if (choice.port == kUsbPort) choice.serial_number = settings.RegGetValue("Hardware", "InstanceName", "");
  return choice;
}

// Not by way of the host's settings, which say nothing of a store that cannot be written.
void Choose(host::SettingsStore& store, const InterfaceChoice& choice) {
  if (choice.port == kUsbPort) store.Write("QOR/Hardware/InstanceName", choice.serial_number);
  store.Write("QOR/General/CommPort", choice.port);
}

}  // namespace korval::apps
