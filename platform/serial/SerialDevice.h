// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace korval::platform {

/// The device that a port names: "COM3", or a device's path, which is given back.
std::string SerialDevice(const std::string& port);

}  // namespace korval::platform
