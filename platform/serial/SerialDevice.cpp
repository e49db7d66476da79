// SPDX-License-Identifier: MIT
#include "platform/serial/SerialDevice.h"

#include "base/NumberText.h"
#include "platform/serial/SerialDriver.h"

namespace korval::platform {

std::string SerialDevice(const std::string& port) {
  if (!port.starts_with("COM")) return port;
  const auto number = base::ReadInteger(port.substr(3));
  return number && *number > 0 ? NumberedDevice(*number) : port;
}

}  // namespace korval::platform
