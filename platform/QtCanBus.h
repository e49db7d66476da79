// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QCanBusDevice>
#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include "ecu/can/CanBus.h"
#include "platform/SocketCanInterface.h"

namespace korval::platform {

/// A CAN bus through one of Qt's plugins. Frames are delivered from the event loop, so that a handler that
/// waits hides none. Plugins keep silent about much of what happens to an adapter, so it is looked after in
/// steady intervals as well.
class QtCanBus : public QObject, public ecu::CanBus {
 public:
  /// Frames that an adapter may have taken and not confirmed.
  static constexpr std::size_t kTransmitLimit = 1000;

  using State = SocketCanInterface::State;
  struct Watch {
    /// What the system says of the interface. Empty: only the plugin knows.
    std::function<State()> state = {};
    std::chrono::milliseconds interval{250};
    /// How long a plugin may take to connect.
    std::chrono::milliseconds connecting{2000};
  };

  /// Opens `interface` of `plugin` ("socketcan", "virtualcan", "peakcan", "passthrucan", ...) at `bitrate`
  /// bit/s, which a socketcan interface has from the system. Raises Failure that says what, why and what to
  /// do.
  QtCanBus(const std::string& plugin, const std::string& interface, std::int32_t bitrate);
  /// `device` is connected, or is connecting; `name` stands in front of what is said about it.
  QtCanBus(std::unique_ptr<QCanBusDevice> device, std::string name, Watch watch);
  ~QtCanBus() override;

  void SetEvents(Events events) override { events_ = std::make_shared<const Events>(std::move(events)); }
  bool Send(const ecu::CanFrame& frame) override;
  bool IsReady() const override;

 private:
  void StateChanged(QCanBusDevice::CanBusDeviceState state);
  void FramesWritten(qint64 count);
  void ErrorOccurred(QCanBusDevice::CanBusError error);
  void FrameDropped();
  void QueueReceive();
  void Receive();
  void ErrorFrameArrived(const QCanBusFrame& frame);
  void QueueLoss(const std::string& why);
  State CurrentState() const;
  void CheckState();
  void SayBusOff(bool bus_off);
  void Raise(Error error, const std::string& text);
  void Recover();

  const std::string name_;
  std::shared_ptr<const Events> events_;
  std::unique_ptr<QCanBusDevice> device_;
  const Watch watch_;
  QDeadlineTimer connect_deadline_{watch_.connecting};
  std::size_t unconfirmed_ = 0;
  bool writing_ = false;
  bool receive_queued_ = false;
  bool lost_ = false;
  std::optional<bool> bus_off_;  // as was said last
  QTimer state_check_;
};

}  // namespace korval::platform
