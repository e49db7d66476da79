// SPDX-License-Identifier: MIT
#include "platform/serial/ApplySettings.h"

#include <QSerialPort>

#include "base/Failure.h"
#include "platform/serial/SerialDriver.h"

namespace korval::platform {
namespace {

QSerialPort::Parity QtParity(base::SerialSettings::Parity parity) {
  switch (parity) {
    case base::SerialSettings::Parity::kEven:
      return QSerialPort::EvenParity;
    case base::SerialSettings::Parity::kOdd:
      return QSerialPort::OddParity;
    case base::SerialSettings::Parity::kMark:
      return QSerialPort::MarkParity;
    case base::SerialSettings::Parity::kSpace:
      return QSerialPort::SpaceParity;
    case base::SerialSettings::Parity::kNone:
      break;
  }
  return QSerialPort::NoParity;
}

QSerialPort::StopBits QtStopBits(const base::SerialSettings& settings) {
  switch (settings.stop_bits) {
    case base::SerialSettings::StopBits::kTwo:
      return QSerialPort::TwoStop;
    case base::SerialSettings::StopBits::kOneAndHalf:
      return OneAndAHalfStopBits(settings.data_bits);
    case base::SerialSettings::StopBits::kOne:
      break;
  }
  return QSerialPort::OneStop;
}

QSerialPort::DataBits QtDataBits(std::int32_t bits) {
  if (bits < 5) throw base::Failure("this system's serial ports have no 4 data bits, choose 5 to 8");
  return static_cast<QSerialPort::DataBits>(bits);
}

}  // namespace

void ApplySettings(const base::SerialSettings& settings, QSerialPort& port) {
  const bool applied = port.setBaudRate(settings.speed) && port.setDataBits(QtDataBits(settings.data_bits)) &&
                       port.setParity(QtParity(settings.parity)) && port.setStopBits(QtStopBits(settings));
  if (!applied) throw base::Failure("the driver refuses the settings: " + port.errorString().toStdString());
}

}  // namespace korval::platform
