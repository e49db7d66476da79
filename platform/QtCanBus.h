// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include <QCanBusDevice>
#include <QObject>
#include <QTimer>

#include "ecu/can/CanBus.h"

namespace korval::platform {

/// A CAN bus through one of Qt's plugins. Frames are delivered from the event loop, so that a handler that
/// waits hides none.
class QtCanBus : public QObject, public ecu::CanBus {
 public:
  /// Frames that may wait for the adapter.
  static constexpr std::size_t kTransmitLimit = 1000;

  /// Opens `interface` of `plugin` ("socketcan", "virtualcan", "peakcan", "passthrucan", ...) at `bitrate`
  /// bit/s, which a socketcan interface has from the system. Raises Failure that says what, why and what to
  /// do.
  QtCanBus(const std::string& plugin, const std::string& interface, std::int32_t bitrate);
  /// `device` is connected, or is connecting; `name` stands in front of what is said about it.
  QtCanBus(std::unique_ptr<QCanBusDevice> device, std::string name);
  ~QtCanBus() override;

  void SetEvents(Events events) override { events_ = std::make_shared<const Events>(std::move(events)); }
  void Send(const ecu::CanFrame& frame) override;

 private:
  void StateChanged(QCanBusDevice::CanBusDeviceState state);
  void FramesWritten(qint64 count);
  void Write(const ecu::CanFrame& frame);
  void QueueReceive();
  void Receive();
  void ErrorFrameArrived(const QCanBusFrame& frame);
  void QueueLoss();
  void CheckStatus();
  void Raise(Error error, const std::string& text);
  void Recover();

  const std::string name_;
  std::shared_ptr<const Events> events_;
  std::unique_ptr<QCanBusDevice> device_;
  std::deque<ecu::CanFrame> waiting_;  // for the connection
  std::size_t unconfirmed_ = 0;
  bool receive_queued_ = false;
  bool bus_off_ = false;
  QTimer status_check_;
};

}  // namespace korval::platform
