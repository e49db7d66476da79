// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

class QSerialPort;

namespace korval::platform {

/// The device of port COM1, COM2, ...: COMN on Windows, /dev/ttyS(N-1) elsewhere.
std::string SerialDevice(std::int32_t number);
/// The device that a port names: "COM3", or a device's path, which is given back.
std::string SerialDevice(const std::string& port);

/// Whether the device of an open port was unplugged. It then reads as an endless stream of nothing.
bool HasHungUp(const QSerialPort& port);

}  // namespace korval::platform
