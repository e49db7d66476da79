// SPDX-License-Identifier: MIT
#include "platform/PluggedInterface.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <QDir>
#include <QFile>
#include <QSerialPortInfo>

#include "platform/DeviceIdentity.h"

namespace korval::platform {
namespace {

constexpr char kCanType[] = "280";  // ARPHRD_CAN of if_arp.h

QString FirstLine(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  return QString::fromUtf8(file.readLine(256)).trimmed();
}

void AddSerialPorts(std::vector<PluggedInterface>& found) {
  for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts()) {
    const QString port = info.systemLocation().startsWith("/dev/") ? info.systemLocation() : info.portName();
    found.push_back(
        {port.toStdString(), info.description().toStdString(), info.serialNumber().toStdString()});
  }
  std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.port < b.port; });
}

// An interface's device is one of the USB device's interfaces; the serial number is the USB device's.
void AddCanInterfaces(const QDir& net, std::vector<PluggedInterface>& found) {
  for (const QString& name : net.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
    const QString folder = net.filePath(name);
    if (FirstLine(folder + "/type") != QLatin1String(kCanType)) continue;
    const QString usb_device = QDir(folder + "/device").canonicalPath() + "/..";
    found.push_back({"CAN:socketcan:" + name.toStdString(), FirstLine(usb_device + "/product").toStdString(),
                     FirstLine(usb_device + "/serial").toStdString()});
  }
}

// Serial numbers come from USB devices. Where Linux shows none behind a serial port, Qt need not go through
// them all.
bool MayHaveNumberedPorts(const std::filesystem::path& tty) {
  std::error_code unreadable;
  const std::filesystem::directory_iterator ports(tty, unreadable);
  if (unreadable) return true;
  return std::any_of(begin(ports), end(ports), [](const std::filesystem::directory_entry& port) {
    std::error_code no_link;
    return std::filesystem::read_symlink(port.path(), no_link).string().find("/usb") != std::string::npos;
  });
}

// QDir would ask for each entry what it is.
void AddNames(const std::filesystem::path& folder, QStringList& names) {
  std::error_code unreadable;
  for (const auto& entry : std::filesystem::directory_iterator(folder, unreadable)) {
    names.append(QString::fromStdString(entry.path().filename().string()));
  }
}

}  // namespace

std::vector<PluggedInterface> ScanInterfaces(const QString& class_folder) {
  std::vector<PluggedInterface> found;
  AddSerialPorts(found);
  AddCanInterfaces(QDir(class_folder + "/net"), found);
  return found;
}

std::vector<PluggedInterface> ScanNumberedInterfaces(const QString& class_folder) {
  std::vector<PluggedInterface> found;
  if (MayHaveNumberedPorts(class_folder.toStdString() + "/tty")) AddSerialPorts(found);
  AddCanInterfaces(QDir(class_folder + "/net"), found);
  std::erase_if(found, [](const auto& plugged) { return plugged.serial_number.empty(); });
  return found;
}

std::vector<PluggedInterface> WithoutDevice(std::vector<PluggedInterface> interfaces,
                                            const std::string& path) {
  std::erase_if(interfaces, [&](const auto& plugged) { return IsSameDevice(plugged.port, path); });
  return interfaces;
}

QStringList InterfaceNames(const QString& class_folder) {
  QStringList names;
  if (QDir(class_folder).exists()) {
    AddNames(class_folder.toStdString() + "/tty", names);
    AddNames(class_folder.toStdString() + "/net", names);
  } else {
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts()) names.append(info.portName());
  }
  names.sort();
  return names;
}

}  // namespace korval::platform
