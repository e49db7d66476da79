// SPDX-License-Identifier: MIT
#include "platform/serial/SerialDevice.h"

#include <QSerialPort>

#ifndef Q_OS_WIN
#include <poll.h>
#endif

#include "base/NumberText.h"

namespace korval::platform {

std::string SerialDevice(std::int32_t number) {
#ifdef Q_OS_WIN
  return "COM" + std::to_string(number);
#else
  return "/dev/ttyS" + std::to_string(number - 1);
#endif
}

std::string SerialDevice(const std::string& port) {
  if (!port.starts_with("COM")) return port;
  const auto number = base::ReadInteger(port.substr(3));
  return number && *number > 0 ? SerialDevice(*number) : port;
}

bool HasHungUp([[maybe_unused]] const QSerialPort& port) {
#ifdef Q_OS_WIN
  return false;  // QSerialPort sees it by itself
#else
  pollfd state = {port.handle(), POLLIN, 0};
  return ::poll(&state, 1, 0) == 1 && (state.revents & (POLLHUP | POLLERR)) != 0;
#endif
}

}  // namespace korval::platform
