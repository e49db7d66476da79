// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include <QSerialPort>

namespace korval::platform {

// What Qt does not know of serial ports. Each operating system has a file of its own for it.

/// The device of port COM1, COM2, ...: on Linux /dev/ttyS0, /dev/ttyS1, ...
std::string NumberedDevice(std::int32_t number);
/// Whether the device of an open port was unplugged. It then reads as an endless stream of nothing.
bool HasHungUp(const QSerialPort& port);
/// What to ask Qt for where one and a half stop bits are wanted. Raises Failure where the system has none.
QSerialPort::StopBits OneAndAHalfStopBits(std::int32_t data_bits);
/// Adds Xon/Xoff to the handshaking by RTS and CTS of an open port; Qt has either kind, not both.
bool AddXonXoff(const QSerialPort& port);
/// Whether the open port has a line that can be held low, and modem lines; a pseudo terminal does not.
bool IsUart(const QSerialPort& port);
/// Has the driver of an open port deliver each byte at once; false where it cannot.
bool SetLowLatency(const QSerialPort& port);

}  // namespace korval::platform
