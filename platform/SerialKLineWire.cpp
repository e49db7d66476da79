// SPDX-License-Identifier: MIT
#include "platform/SerialKLineWire.h"

#include <utility>

#include <QSerialPort>
#include <QSerialPortInfo>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "base/SerialSettings.h"
#include "platform/serial/ApplySettings.h"
#include "platform/serial/SerialDevice.h"
#include "platform/serial/SerialDriver.h"

namespace korval::platform {
namespace {

constexpr qint64 kReceiveLimit = qint64{64} * 1024;

// Some CH340 and CH341 have no break of their own: their driver sends a byte so slow that the line is low for
// some 200 ms. Which of them do cannot be asked for.
bool HoldsBreakOf(const QSerialPortInfo& info) {
  static constexpr quint16 kMakerOfTheseChips = 0x1A86;
  return !info.hasVendorIdentifier() || info.vendorIdentifier() != kMakerOfTheseChips;
}

std::string WhatToDo(QSerialPort::SerialPortError error) {
  switch (error) {
    case QSerialPort::DeviceNotFoundError:
      return "plug the adapter in, or choose another port";
    case QSerialPort::PermissionError:
      return "close the program that uses it, or join the group that owns it (dialout)";
    default:
      return "check the adapter";
  }
}

}  // namespace

SerialKLineWire::SerialKLineWire(const std::string& port, Report report)
    : device_(SerialDevice(port)), report_(std::move(report)), port_(std::make_unique<QSerialPort>()) {
  connect(port_.get(), &QSerialPort::readyRead, this, &SerialKLineWire::QueueBytes);
  connect(port_.get(), &QSerialPort::errorOccurred, this, [this](QSerialPort::SerialPortError error) {
    if (port_->isOpen() && (error == QSerialPort::ResourceError || HasHungUp(*port_))) QueueLoss();
  });
}

SerialKLineWire::~SerialKLineWire() {
  port_->disconnect();
  port_->close();
}

void SerialKLineWire::Open(std::int32_t baud) {
  if (!port_->isOpen()) OpenDevice();
  SetSpeed(baud);
}

void SerialKLineWire::OpenDevice() {
  port_->setPortName(QString::fromStdString(device_));
  port_->setReadBufferSize(kReceiveLimit);
  if (!port_->open(QIODevice::ReadWrite)) {
    throw base::Failure("serial device " + device_ + " cannot be opened: " +
                        port_->errorString().toStdString() + "; " + WhatToDo(port_->error()));
  }
  ++opening_;
  is_uart_ = IsUart(*port_);
  holds_break_ = !is_uart_ || HoldsBreakOf(QSerialPortInfo(*port_));
  if (is_uart_ && !SetLowLatency(*port_)) {
    report_("Serial device " + device_ +
            " has no low-latency mode: what the ECU says may come some 16 ms late. If answers are missed, "
            "give the ECU file longer times (P1Ms, P2Ms, W2Ms, W3Ms)");
  }
}

void SerialKLineWire::SetSpeed(std::int32_t baud) {
  base::SerialSettings settings;
  settings.speed = baud;
  try {
    ApplySettings(settings, *port_);
  } catch (const base::Failure& failure) {
    port_->close();
    throw base::Failure(kInterfaceRefused, "serial device " + device_ + " cannot be set to " +
                                               std::to_string(baud) + " bit/s: " + failure.Description());
  }
}

bool SerialKLineWire::SetBreak(bool low) {
  return is_uart_ && port_->isOpen() && port_->setBreakEnabled(low);
}

bool SerialKLineWire::SetModemLines(std::optional<bool> rts, std::optional<bool> dtr) {
  if (!is_uart_ || !port_->isOpen()) return false;
  return (!rts || port_->setRequestToSend(*rts)) && (!dtr || port_->setDataTerminalReady(*dtr));
}

void SerialKLineWire::Write(base::ByteView bytes) {
  if (!port_->isOpen()) return;
  port_->write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
  port_->flush();
}

void SerialKLineWire::Close() {
  bytes_queued_ = false;
  if (port_->isOpen()) port_->close();
}

// Qt announces no new bytes from inside its own read handler, and a handler may wait for them.
void SerialKLineWire::QueueBytes() {
  if (std::exchange(bytes_queued_, true)) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        if (std::exchange(bytes_queued_, false)) DeliverBytes();
      },
      Qt::QueuedConnection);
}

void SerialKLineWire::DeliverBytes() {
  const QByteArray bytes = port_->readAll();
  if (bytes.isEmpty()) return;
  const auto events = events_;
  if (!events->on_bytes) return;
  events->on_bytes(base::ByteView(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                  static_cast<std::size_t>(bytes.size())));
}

void SerialKLineWire::QueueLoss() {
  QMetaObject::invokeMethod(
      this,
      [this, opening = opening_] {
        if (opening == opening_) Lose();
      },
      Qt::QueuedConnection);
}

void SerialKLineWire::Lose() {
  if (!port_->isOpen()) return;
  Close();
  const auto events = events_;
  if (events->on_lost) events->on_lost("serial device " + device_ + " was lost: plug the adapter in");
}

}  // namespace korval::platform
