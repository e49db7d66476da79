// SPDX-License-Identifier: MIT
#include "platform/serial/ApplySettings.h"

#include <QSerialPort>

#include "base/Failure.h"

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
#ifdef Q_OS_WIN
      return QSerialPort::OneAndHalfStop;
#else
      // The hardware sends 1.5 for "two stop bits" with five data bits, and knows no 1.5 otherwise.
      if (settings.data_bits == 5) return QSerialPort::TwoStop;
      throw base::Failure("1.5 stop bits go with 5 data bits only on this system");
#endif
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
