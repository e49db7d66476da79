// SPDX-License-Identifier: MIT
#include "platform/QtCanBus.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <QCanBus>
#include <QCanBusFrame>
#include <QPointer>
#include <QVariant>

#include "base/Failure.h"

namespace korval::platform {
namespace {

QCanBusFrame QtFrame(const ecu::CanFrame& frame) {
  const base::ByteView bytes = frame.Bytes();
  QCanBusFrame qt(frame.identifier.number, QByteArray(reinterpret_cast<const char*>(bytes.data()),
                                                      static_cast<qsizetype>(bytes.size())));
  qt.setExtendedFrameFormat(frame.identifier.extended);
  return qt;
}

ecu::CanFrame FrameOf(const QCanBusFrame& qt) {
  const QByteArray payload = qt.payload();
  return {{qt.frameId(), qt.hasExtendedFrameFormat()},
          base::ByteView(reinterpret_cast<const std::uint8_t*>(payload.constData()),
                         static_cast<std::size_t>(payload.size()))};
}

// Frames of CAN FD belong to others on the bus.
bool IsClassicData(const QCanBusFrame& frame) {
  return frame.frameType() == QCanBusFrame::DataFrame && !frame.hasFlexibleDataRateFormat();
}

// A socketcan interface gets its bit rate from the system, a virtual one has none.
bool TakesBitrate(const std::string& plugin) { return plugin != "socketcan" && plugin != "virtualcan"; }

void Configure(QCanBusDevice& device, const std::string& plugin, std::int32_t bitrate) {
  if (TakesBitrate(plugin)) device.setConfigurationParameter(QCanBusDevice::BitRateKey, bitrate);
  if (plugin != "socketcan") return;
  device.setConfigurationParameter(QCanBusDevice::ErrorFilterKey,
                                   QVariant::fromValue(QCanBusFrame::FrameErrors(QCanBusFrame::AnyError)));
}

std::string WhatToDo(const std::string& plugin, const std::string& interface, std::int32_t bitrate) {
  if (plugin == "socketcan") {
    return "plug the adapter in and bring the interface up (ip link set " + interface +
           " up type can bitrate " + std::to_string(bitrate) + " restart-ms 100)";
  }
  return "check the plugin's name, install the adapter's driver, plug the adapter in and close other "
         "programs "
         "that use it";
}

std::string NameOf(const std::string& plugin, const std::string& interface) {
  return "CAN interface " + interface + " (" + plugin + ")";
}

// The plugin of socketcan does not tell when its interface goes.
std::function<QtCanBus::State()> StateOf(const std::string& plugin, const std::string& interface) {
  if (plugin != "socketcan") return {};
  return [opened = SocketCanInterface::Named(interface)] { return opened.CurrentState(); };
}

// The plugins pass on the system's own words.
bool IsQueueFull(const QString& error) {
  return error == qt_error_string(ENOBUFS) || error == qt_error_string(EAGAIN);
}

std::unique_ptr<QCanBusDevice> OpenDevice(const std::string& plugin, const std::string& interface,
                                          std::int32_t bitrate) {
  const auto refuse = [&](const QString& why) {
    throw base::Failure(NameOf(plugin, interface) + " cannot be opened: " + why.toStdString() + "; " +
                        WhatToDo(plugin, interface, bitrate));
  };
  QString error;
  std::unique_ptr<QCanBusDevice> device(QCanBus::instance()->createDevice(
      QString::fromStdString(plugin), QString::fromStdString(interface), &error));
  if (!device) refuse(error);
  Configure(*device, plugin, bitrate);
  if (!device->connectDevice()) refuse(device->errorString());
  const auto state = StateOf(plugin, interface);
  if (state && state() == QtCanBus::State::kGone) refuse("the interface is down");
  return device;
}

}  // namespace

QtCanBus::QtCanBus(const std::string& plugin, const std::string& interface, std::int32_t bitrate)
    : QtCanBus(OpenDevice(plugin, interface, bitrate), NameOf(plugin, interface),
               Watch{StateOf(plugin, interface)}) {}

QtCanBus::QtCanBus(std::unique_ptr<QCanBusDevice> device, std::string name, Watch watch)
    : name_(std::move(name)),
      events_(std::make_shared<const Events>()),
      device_(std::move(device)),
      watch_(std::move(watch)) {
  connect(device_.get(), &QCanBusDevice::framesReceived, this, &QtCanBus::QueueReceive);
  connect(device_.get(), &QCanBusDevice::framesWritten, this, &QtCanBus::FramesWritten);
  connect(device_.get(), &QCanBusDevice::stateChanged, this, &QtCanBus::StateChanged);
  connect(device_.get(), &QCanBusDevice::errorOccurred, this, &QtCanBus::ErrorOccurred);
  connect(&state_check_, &QTimer::timeout, this, &QtCanBus::CheckState);
  state_check_.start(watch_.interval);
}

QtCanBus::~QtCanBus() {
  device_->disconnect();
  device_->disconnectDevice();
}

void QtCanBus::FramesWritten(qint64 count) {
  unconfirmed_ -= std::min(unconfirmed_, static_cast<std::size_t>(count));
  for (qint64 i = 0; i < count; ++i) {
    const auto events = events_;  // the handler may replace them
    if (events->on_sent) events->on_sent();
  }
}

// A virtual bus is connected only after a while, and without a word not any more.
void QtCanBus::StateChanged(QCanBusDevice::CanBusDeviceState state) {
  if (state == QCanBusDevice::UnconnectedState) return QueueLoss("the connection has ended");
  if (state != QCanBusDevice::ConnectedState) return;
  QMetaObject::invokeMethod(this, &QtCanBus::CheckState, Qt::QueuedConnection);
}

void QtCanBus::ErrorOccurred(QCanBusDevice::CanBusError error) {
  if (error == QCanBusDevice::ReadError || error == QCanBusDevice::ConnectionError) {
    QueueLoss(device_->errorString().toStdString());
  } else if (error == QCanBusDevice::WriteError && !writing_) {
    FrameDropped();
  }
}

bool QtCanBus::IsReady() const {
  return device_->state() == QCanBusDevice::ConnectedState && CurrentState() == State::kOn;
}

// A frame that is refused because the adapter is lost is lost with it.
bool QtCanBus::Send(const ecu::CanFrame& frame) {
  if (unconfirmed_ >= kTransmitLimit || device_->state() == QCanBusDevice::ConnectingState) return false;
  ++unconfirmed_;  // the confirmation may come from inside
  writing_ = true;
  const bool written = device_->writeFrame(QtFrame(frame));
  writing_ = false;
  if (written) return true;
  --unconfirmed_;
  const QString error = device_->errorString();
  if (IsQueueFull(error)) return false;
  QueueLoss(error.toStdString());
  return true;
}

void QtCanBus::FrameDropped() {
  unconfirmed_ -= std::min<std::size_t>(unconfirmed_, 1);
  Raise(Error::kQueueFull, "a frame could not be sent: " + device_->errorString().toStdString());
}

void QtCanBus::QueueReceive() {
  if (std::exchange(receive_queued_, true)) return;
  QMetaObject::invokeMethod(this, &QtCanBus::Receive, Qt::QueuedConnection);
}

void QtCanBus::Receive() {
  receive_queued_ = false;
  const QPointer<QtCanBus> self(this);  // a handler may destroy the bus
  while (self && device_->framesAvailable() > 0) {
    const QCanBusFrame frame = device_->readFrame();
    const auto events = events_;
    if (frame.frameType() == QCanBusFrame::ErrorFrame) {
      ErrorFrameArrived(frame);
    } else if (IsClassicData(frame) && events->on_frame) {
      events->on_frame(FrameOf(frame));
    }
  }
}

void QtCanBus::ErrorFrameArrived(const QCanBusFrame& frame) {
  const QCanBusFrame::FrameErrors errors = frame.error();
  if (errors.testFlag(QCanBusFrame::ControllerRestartError)) return SayBusOff(false);
  if (errors.testFlag(QCanBusFrame::BusOffError)) {
    SayBusOff(true);
  } else if (errors.testFlag(QCanBusFrame::MissingAcknowledgmentError)) {
    Raise(Error::kNoAcknowledge, "nobody acknowledges: check wiring, bit rate and the ECU's power");
  }
}

QtCanBus::State QtCanBus::CurrentState() const {
  if (watch_.state) return watch_.state();
  const bool bus_off = device_->hasBusStatus() ? device_->busStatus() == QCanBusDevice::CanBusStatus::BusOff
                                               : bus_off_.value_or(false);
  return bus_off ? State::kBusOff : State::kOn;
}

void QtCanBus::CheckState() {
  if (device_->state() != QCanBusDevice::ConnectedState) {
    if (connect_deadline_.hasExpired()) QueueLoss("it does not connect");
    return;
  }
  const State state = CurrentState();
  if (state == State::kGone) return QueueLoss("the interface is gone or down");
  SayBusOff(state == State::kBusOff);
}

void QtCanBus::SayBusOff(bool bus_off) {
  if (std::exchange(bus_off_, bus_off) == bus_off) return;
  if (!bus_off) return Recover();
  Raise(Error::kBusOff, "the controller is bus off: check bit rate, wiring and termination");
}

// From inside a signal the device may not be destroyed, which is what its owner does next.
void QtCanBus::QueueLoss(const std::string& why) {
  if (std::exchange(lost_, true)) return;
  const auto raise = [this, why] {
    Raise(Error::kUnplugged,
          "it was lost (" + why + "): check that the adapter is plugged in and its interface is up");
  };
  QMetaObject::invokeMethod(this, raise, Qt::QueuedConnection);
}

void QtCanBus::Raise(Error error, const std::string& text) {
  const auto events = events_;
  if (events->on_error) events->on_error(error, name_ + ": " + text);
}

void QtCanBus::Recover() {
  const auto events = events_;
  if (events->on_recovered) events->on_recovered();
}

}  // namespace korval::platform
