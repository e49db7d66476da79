// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QStringList>

#include "base/EventLoop.h"
#include "diag/PortScout.h"
#include "platform/PluggedInterface.h"

namespace korval::platform {

/// Lists the plugged-in interfaces that have a serial number, without the one that is the client's RS232
/// line. Every two seconds it takes a glimpse at what is there, and looks closer only when that differs: a
/// few times, because the serial number comes after the name.
class DevicePortScout : public diag::PortScout {
 public:
  using Scan = std::function<std::vector<PluggedInterface>()>;
  using Glimpse = std::function<QStringList()>;

  static constexpr std::chrono::milliseconds kInterval{2000};
  static constexpr int kLooks = 3;

  /// On this computer's interfaces; `client_line` gives the device of the RS232 line.
  DevicePortScout(std::shared_ptr<base::EventLoop> loop, std::function<std::string()> client_line);
  DevicePortScout(std::shared_ptr<base::EventLoop> loop, Scan scan, Glimpse glimpse);

  std::string DeviceList() override;
  void SetOnDevicesHaveChanged(std::function<void()> on_changed) override;
  void Shutdown() override;

 private:
  std::vector<std::string> SerialNumbers() const;
  void Look();

  std::shared_ptr<base::EventLoop> loop_;
  Scan scan_;
  Glimpse glimpse_;
  QStringList names_;
  int looks_left_ = 0;
  std::vector<std::string> known_;
  std::function<void()> on_changed_;
  std::unique_ptr<base::Timer> timer_;
};

}  // namespace korval::platform
