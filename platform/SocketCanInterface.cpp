// SPDX-License-Identifier: MIT
#include "platform/SocketCanInterface.h"

#include <utility>

#include <QFile>

namespace korval::platform {

SocketCanInterface::SocketCanInterface(QString folder)
    : folder_(std::move(folder)), index_(Read("ifindex")) {}

SocketCanInterface SocketCanInterface::Named(const std::string& name) {
  return SocketCanInterface("/sys/class/net/" + QString::fromStdString(name));
}

SocketCanInterface::State SocketCanInterface::CurrentState() const {
  if (Read("ifindex") != index_) return State::kGone;
  const QByteArray carrier = Read("carrier");  // refused while the interface is down
  if (carrier.isEmpty()) return State::kGone;
  return carrier == "0" ? State::kBusOff : State::kOn;
}

QByteArray SocketCanInterface::Read(const char* file) const {
  QFile opened(folder_ + "/" + file);
  return opened.open(QIODevice::ReadOnly) ? opened.readAll().trimmed() : QByteArray();
}

}  // namespace korval::platform
