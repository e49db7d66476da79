// SPDX-License-Identifier: MIT
#include "client/device/DeviceChannel.h"

#include <string>
#include <utility>

#include <QEventLoop>
#include <QSerialPort>
#include <QTcpSocket>
#include <QTimer>

#include "client/ClientErrors.h"
#include "platform/serial/ApplySettings.h"

namespace korval::client {
namespace {

/// Runs the event loop until one of the signals that were connected to it, or the time-out.
class Waiter {
 public:
  explicit Waiter(std::chrono::milliseconds timeout) {
    timer_.setSingleShot(true);
    QObject::connect(&timer_, &QTimer::timeout, &loop_, &QEventLoop::quit);
    timer_.start(timeout);
  }
  template <typename Sender, typename Signal>
  void Until(Sender* sender, Signal signal) {
    QObject::connect(sender, signal, &loop_, &QEventLoop::quit);
  }
  /// False when the time was up first.
  bool Wait() {
    loop_.exec();
    return timer_.isActive();
  }

 private:
  QEventLoop loop_;
  QTimer timer_;
};

template <typename Device>
class DeviceChannel : public Channel {
 public:
  explicit DeviceChannel(std::unique_ptr<Device> device) : device_(std::move(device)) {}

  void Send(base::ByteView frame) override {
    received_.Clear();  // what came late belongs to an earlier request
    device_->readAll();
    device_->write(reinterpret_cast<const char*>(frame.data()), static_cast<qint64>(frame.size()));
    device_->flush();
  }

  base::ByteBuffer Receive(std::chrono::milliseconds timeout) override {
    Waiter waiter(timeout);
    waiter.Until(device_.get(), &Device::readyRead);
    waiter.Until(device_.get(), &Device::errorOccurred);
    while (!IsWhole()) {
      if (device_->bytesAvailable() > 0) {
        const QByteArray bytes = device_->readAll();
        received_.Append(base::ByteView(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                        static_cast<std::size_t>(bytes.size())));
      } else if (IsDown(*device_)) {
        throw LinkError("The connection to the server is lost");
      } else if (!waiter.Wait()) {
        throw LinkError("No answer from the server within " + std::to_string(timeout.count()) + " ms");
      }
    }
    return std::exchange(received_, {});
  }

 private:
  static bool IsDown(const QTcpSocket& socket) { return socket.state() != QAbstractSocket::ConnectedState; }
  static bool IsDown(const QSerialPort& port) { return port.error() == QSerialPort::ResourceError; }

  bool IsWhole() const { return received_.Length() >= 2 && received_.Length() >= received_.Word(0); }

  std::unique_ptr<Device> device_;
  base::ByteBuffer received_;
};

}  // namespace

std::unique_ptr<Channel> ConnectTcp(const std::string& host, std::uint16_t port,
                                    std::chrono::milliseconds timeout) {
  auto socket = std::make_unique<QTcpSocket>();
  Waiter waiter(timeout);
  waiter.Until(socket.get(), &QTcpSocket::connected);
  waiter.Until(socket.get(), &QTcpSocket::errorOccurred);
  socket->connectToHost(QString::fromStdString(host), port);
  const bool is_pending = socket->state() != QAbstractSocket::ConnectedState &&
                          socket->state() != QAbstractSocket::UnconnectedState;
  if (is_pending) waiter.Wait();
  if (socket->state() != QAbstractSocket::ConnectedState) {
    const std::string why = socket->error() == QAbstractSocket::UnknownSocketError
                                ? "no answer in time"
                                : socket->errorString().toStdString();
    throw LinkError("No connection to " + host + " port " + std::to_string(port) + ": " + why +
                    "; is the server running there?");
  }
  socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
  return std::make_unique<DeviceChannel<QTcpSocket>>(std::move(socket));
}

std::unique_ptr<Channel> OpenSerial(const std::string& device, const base::SerialSettings& settings) {
  auto port = std::make_unique<QSerialPort>(QString::fromStdString(device));
  if (!port->open(QIODevice::ReadWrite)) {
    throw LinkError("Serial device " + device + " cannot be opened: " + port->errorString().toStdString() +
                    "; is it plugged in and free?");
  }
  try {
    platform::ApplySettings(settings, *port);
  } catch (const base::Failure& failure) {
    throw LinkError("Serial device " + device + " does not know these settings: " + failure.Description() +
                    "; try 9600,n,8,1");
  }
  return std::make_unique<DeviceChannel<QSerialPort>>(std::move(port));
}

}  // namespace korval::client
