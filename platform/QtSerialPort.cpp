// SPDX-License-Identifier: MIT
#include "platform/QtSerialPort.h"

#include <utility>

#include <QPointer>
#include <QSerialPort>

#include "base/Failure.h"
#include "platform/serial/ApplySettings.h"
#include "platform/serial/SerialDevice.h"
#include "platform/serial/SerialDriver.h"

namespace korval::platform {
namespace {

constexpr std::chrono::milliseconds kLineCheckInterval{100};
constexpr std::int32_t kNoHandshaking = 0;
constexpr std::int32_t kXonXoff = 1;
constexpr std::int32_t kXonXoffAndRts = 3;
constexpr qint64 kReceiveLimit = qint64{1024} * 1024;
constexpr qint64 kTransmitLimit = qint64{1024} * 1024;

bool HandshakesByRts(std::int32_t handshaking) {
  return handshaking != kNoHandshaking && handshaking != kXonXoff;
}

QSerialPort::FlowControl QtFlowControl(std::int32_t handshaking) {
  if (HandshakesByRts(handshaking)) return QSerialPort::HardwareControl;
  return handshaking == kXonXoff ? QSerialPort::SoftwareControl : QSerialPort::NoFlowControl;
}

std::string WhatToDo(QSerialPort::SerialPortError error) {
  switch (error) {
    case QSerialPort::DeviceNotFoundError:
      return "plug the adapter in, or name the device (--serial-device)";
    case QSerialPort::PermissionError:
      return "close the program that uses it, or join the group that owns it (dialout)";
    default:
      return "check the device and the settings";
  }
}

}  // namespace

QtSerialPort::QtSerialPort(Report report)
    : report_(std::move(report)),
      on_comm_(std::make_shared<const OnComm>()),
      port_(std::make_unique<QSerialPort>()) {
  connect(port_.get(), &QSerialPort::readyRead, this, &QtSerialPort::OnReadyRead);
  connect(port_.get(), &QSerialPort::errorOccurred, this, [this](QSerialPort::SerialPortError error) {
    // A line that hangs up may end reads with nothing, which Qt reports as any error but this one.
    if (error == QSerialPort::ResourceError || HasHungUp(*port_)) QueueLoss();
  });
  connect(&line_check_, &QTimer::timeout, this, &QtSerialPort::CheckLine);
}

QtSerialPort::~QtSerialPort() {
  port_->disconnect();
  port_->close();
}

void QtSerialPort::SetDevice(std::int32_t number, const std::string& path) {
  device_number_ = number;
  device_ = path;
}

std::string QtSerialPort::Device() const {
  if (!device_.empty() && device_number_ == port_number_) return device_;
  return NumberedDevice(port_number_);
}

void QtSerialPort::SetSettings(const std::string& settings) {
  const base::SerialSettings read = base::ReadSerialSettings(settings);
  if (IsOpen()) Apply(read);
  settings_ = settings;
}

void QtSerialPort::SetHandshaking(std::int32_t code) {
  if (code < kNoHandshaking || code > kXonXoffAndRts) {
    throw base::Failure("Handshaking " + std::to_string(code) +
                        " is unknown: 0 none, 1 Xon/Xoff, 2 RTS, 3 Xon/RTS");
  }
  handshaking_ = code;
  if (IsOpen()) Apply(base::ReadSerialSettings(settings_));
}

bool QtSerialPort::IsOpen() const { return port_->isOpen(); }

void QtSerialPort::Apply(const base::SerialSettings& settings) {
  ApplySettings(settings, *port_);
  const bool applied = port_->setFlowControl(QtFlowControl(handshaking_)) &&
                       (handshaking_ != kXonXoffAndRts || AddXonXoff(*port_));
  if (!applied)
    throw base::Failure("the driver refuses the handshaking: " + port_->errorString().toStdString());
}

void QtSerialPort::Open() {
  if (IsOpen()) return;
  const std::string device = Device();
  const auto refuse = [&](const std::string& why) {
    port_->close();
    throw base::Failure("Serial port COM" + std::to_string(port_number_) + " (" + device +
                        ") cannot be opened: " + why);
  };
  port_->setPortName(QString::fromStdString(device));
  port_->setReadBufferSize(kReceiveLimit);
  if (!port_->open(QIODevice::ReadWrite)) {
    refuse(port_->errorString().toStdString() + "; " + WhatToDo(port_->error()));
  }
  try {
    Apply(base::ReadSerialSettings(settings_));
  } catch (const base::Failure& failure) {
    refuse(failure.Description());
  }
  ++opening_;
  LineErrors::Counters counters;
  if (LineErrors::Query(static_cast<int>(port_->handle()), counters)) {
    line_errors_.Start(counters);
    line_check_.start(kLineCheckInterval);
  }
}

void QtSerialPort::Close() {
  line_check_.stop();
  receive_queued_ = false;
  if (port_->isOpen()) port_->close();
}

base::ByteBuffer QtSerialPort::Read() {
  const QByteArray bytes = port_->isOpen() ? port_->readAll() : QByteArray();
  return base::ByteBuffer(base::ByteView(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                         static_cast<std::size_t>(bytes.size())));
}

void QtSerialPort::Write(base::ByteView bytes) {
  if (!port_->isOpen()) return;
  if (port_->bytesToWrite() > kTransmitLimit) {
    Raise(protocol::CommEvent::kTransmitBufferFull);
    return;
  }
  port_->write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
  port_->flush();
}

// Qt announces no new bytes from inside its own read handler, so the event is queued: a handler that waits
// must not hide what comes next.
void QtSerialPort::OnReadyRead() {
  if (std::exchange(receive_queued_, true)) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        if (std::exchange(receive_queued_, false)) Raise(protocol::CommEvent::kReceive);
      },
      Qt::QueuedConnection);
}

void QtSerialPort::QueueLoss() {
  QMetaObject::invokeMethod(
      this,
      [this, opening = opening_] {
        if (opening == opening_) LoseDevice();
      },
      Qt::QueuedConnection);
}

void QtSerialPort::LoseDevice() {
  if (!port_->isOpen()) return;
  Close();
  report_("Serial device " + Device() + " was lost: plug it in again, then open the port");
  Raise(protocol::CommEvent::kDcbError);
}

void QtSerialPort::CheckLine() {
  LineErrors::Counters counters;
  if (!port_->isOpen() || !LineErrors::Query(static_cast<int>(port_->handle()), counters)) return;
  const QPointer<QtSerialPort> self(this);  // a handler may destroy the port
  for (const protocol::CommEvent event : line_errors_.Since(counters, HandshakesByRts(handshaking_))) {
    if (self) Raise(event);
  }
}

void QtSerialPort::Raise(protocol::CommEvent event) {
  const auto on_comm = on_comm_;  // the handler may be replaced inside itself
  if (*on_comm) (*on_comm)(event);
}

}  // namespace korval::platform
