// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QObject>
#include <QTimer>

#include "base/SerialSettings.h"
#include "platform/LineErrors.h"
#include "protocol/SerialPort.h"

class QSerialPort;

namespace korval::platform {

/// The RS232 port on Qt SerialPort. Line errors come from the driver's own counters, which not every driver
/// has; a pseudo terminal, for one, has none. A device that is unplugged closes the port and is reported
/// as comm event 1011; it can be opened again.
class QtSerialPort : public QObject, public protocol::SerialPort {
 public:
  using Report = std::function<void(const std::string&)>;

  /// `report` is told what became of the device when it is lost.
  explicit QtSerialPort(Report report);
  ~QtSerialPort() override;

  /// The device that stands for port `number`; without one, port N is COMN on Windows and /dev/ttyS(N-1)
  /// elsewhere.
  void SetDevice(std::int32_t number, const std::string& path);
  std::string Device() const;

  void SetOnComm(OnComm on_comm) override { on_comm_ = std::make_shared<const OnComm>(std::move(on_comm)); }
  void SetPortNumber(std::int32_t number) override { port_number_ = number; }
  std::int32_t PortNumber() const override { return port_number_; }
  void SetSettings(const std::string& settings) override;
  std::string Settings() const override { return settings_; }
  void SetHandshaking(std::int32_t code) override;
  std::int32_t Handshaking() const override { return handshaking_; }

  bool IsOpen() const override;
  void Open() override;
  void Close() override;
  /// QSerialPort does so from the start.
  void DeliverRawBytes() override {}
  base::ByteBuffer Read() override;
  void Write(base::ByteView bytes) override;

 private:
  void Apply(const base::SerialSettings& settings);
  void OnReadyRead();
  void QueueLoss();
  void LoseDevice();
  void CheckLine();
  void Raise(protocol::CommEvent event);

  Report report_;
  std::shared_ptr<const OnComm> on_comm_;
  std::unique_ptr<QSerialPort> port_;
  std::int32_t port_number_ = 1;
  std::int32_t device_number_ = 0;
  std::string device_;
  std::string settings_ = "9600,n,8,1";
  std::int32_t handshaking_ = 0;
  bool receive_queued_ = false;
  std::int32_t opening_ = 0;  // which one it is, so that an event of an earlier one is told apart
  LineErrors line_errors_;
  QTimer line_check_;
};

}  // namespace korval::platform
