// SPDX-License-Identifier: MIT
#include "platform/serial/SerialDriver.h"

#include <linux/serial.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>

#include "base/Failure.h"

namespace korval::platform {

std::string NumberedDevice(std::int32_t number) { return "/dev/ttyS" + std::to_string(number - 1); }

bool HasHungUp(const QSerialPort& port) {
  pollfd state = {port.handle(), POLLIN, 0};
  return ::poll(&state, 1, 0) == 1 && (state.revents & (POLLHUP | POLLERR)) != 0;
}

// The hardware sends 1.5 for "two stop bits" with five data bits, and knows no 1.5 otherwise.
QSerialPort::StopBits OneAndAHalfStopBits(std::int32_t data_bits) {
  if (data_bits == 5) return QSerialPort::TwoStop;
  throw base::Failure("1.5 stop bits go with 5 data bits only on this system");
}

bool AddXonXoff(const QSerialPort& port) {
  termios control = {};
  if (::tcgetattr(port.handle(), &control) != 0) return false;
  control.c_iflag |= IXON | IXOFF;
  return ::tcsetattr(port.handle(), TCSANOW, &control) == 0;
}

// A pseudo terminal takes the order for a break and does nothing; it has no modem lines either.
bool IsUart(const QSerialPort& port) {
  int lines = 0;
  return ::ioctl(port.handle(), TIOCMGET, &lines) == 0;
}

bool SetLowLatency(const QSerialPort& port) {
  serial_struct settings = {};
  if (::ioctl(port.handle(), TIOCGSERIAL, &settings) != 0) return false;
  settings.flags |= ASYNC_LOW_LATENCY;
  return ::ioctl(port.handle(), TIOCSSERIAL, &settings) == 0;
}

}  // namespace korval::platform
