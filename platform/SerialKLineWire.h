// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QObject>

#include "ecu/kline/KLineWire.h"

class QSerialPort;

namespace korval::platform {

/// A K-line adapter on a serial port. Adapters on USB collect what they hear before they pass it on; where
/// the driver allows it, they are told not to.
class SerialKLineWire : public QObject, public ecu::KLineWire {
 public:
  using Report = std::function<void(const std::string&)>;

  /// `port` is a device's path or "COM3". `report` is told of what may make trouble.
  SerialKLineWire(const std::string& port, Report report);
  ~SerialKLineWire() override;

  void SetEvents(Events events) override { events_ = std::make_shared<const Events>(std::move(events)); }
  void Open(std::int32_t baud) override;
  /// A pseudo terminal, for one, cannot be pulled low.
  bool SetBreak(bool low) override;
  bool HoldsBreak() const override { return holds_break_; }
  bool SetModemLines(std::optional<bool> rts, std::optional<bool> dtr) override;
  void Write(base::ByteView bytes) override;
  void Close() override;

 private:
  void OpenDevice();
  void SetSpeed(std::int32_t baud);
  void QueueBytes();
  void DeliverBytes();
  void QueueLoss();
  void Lose();

  std::string device_;
  Report report_;
  std::shared_ptr<const Events> events_ = std::make_shared<const Events>();
  std::unique_ptr<QSerialPort> port_;
  bool is_uart_ = false;
  bool holds_break_ = true;
  bool bytes_queued_ = false;
  int opening_ = 0;  // which one it is, so that an event of an earlier one is told apart
};

}  // namespace korval::platform
