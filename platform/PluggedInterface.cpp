// SPDX-License-Identifier: MIT
#include "platform/PluggedInterface.h"

#include <algorithm>

#include <QDir>
#include <QFile>
#include <QSerialPortInfo>

#ifndef Q_OS_WIN
#include <sys/stat.h>
#endif

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

bool IsSameDevice(const std::string& one, const std::string& other) {
  if (one == other) return true;
#ifdef Q_OS_WIN
  return false;
#else
  struct stat first = {};
  struct stat second = {};
  if (::stat(one.c_str(), &first) != 0 || ::stat(other.c_str(), &second) != 0) return false;
  return S_ISCHR(first.st_mode) && S_ISCHR(second.st_mode) && first.st_rdev == second.st_rdev;
#endif
}

}  // namespace

std::vector<PluggedInterface> ScanInterfaces(const QString& class_folder) {
  std::vector<PluggedInterface> found;
  AddSerialPorts(found);
  AddCanInterfaces(QDir(class_folder + "/net"), found);
  return found;
}

std::vector<PluggedInterface> WithoutDevice(std::vector<PluggedInterface> interfaces,
                                            const std::string& path) {
  std::erase_if(interfaces, [&](const auto& plugged) { return IsSameDevice(plugged.port, path); });
  return interfaces;
}

QStringList InterfaceNames(const QString& class_folder) {
  if (!QDir(class_folder).exists()) {
    QStringList names;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts()) names.append(info.portName());
    return names;
  }
  return QDir(class_folder + "/tty").entryList(QDir::Dirs | QDir::NoDotAndDotDot) +
         QDir(class_folder + "/net").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
}

}  // namespace korval::platform
