// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include <QDBusConnection>

#include "platform/UnprivilegedPower.h"

namespace korval::platform {

/// The power service of a Linux system, org.freedesktop.login1 on the system bus.
class LogindPower : public UnprivilegedPower {
 public:
  using ConnectToBus = std::function<QDBusConnection()>;

  /// The bus is connected to when it is first needed.
  explicit LogindPower(ConnectToBus connect = QDBusConnection::systemBus) : connect_(std::move(connect)) {}

  /// Raises Failure with the service's own words when it refuses, or does not answer within 5 s.
  void ExitWindows(std::uint32_t flags, std::uint32_t reserved) override;

 private:
  ConnectToBus connect_;
};

}  // namespace korval::platform
