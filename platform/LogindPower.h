// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include <QDBusConnection>

#include "host/power/PowerPlatform.h"

namespace korval::platform {

/// The power service of a Linux system, org.freedesktop.login1 on the system bus. There is no privilege to
/// enable: the service itself decides who may.
class LogindPower : public host::PowerPlatform {
 public:
  using ConnectToBus = std::function<QDBusConnection()>;

  /// The bus is connected to when it is first needed.
  explicit LogindPower(ConnectToBus connect = QDBusConnection::systemBus) : connect_(std::move(connect)) {}

  /// Never of the NT family.
  bool GetVersion(host::OsVersion& version) override;
  std::uint32_t GetCurrentProcess() override { return 0; }
  std::uint32_t OpenProcessToken(std::uint32_t) override { return 0; }
  std::uint32_t LookupPrivilegeValue(const std::string&) override { return 0; }
  std::uint32_t AdjustTokenPrivileges() override { return 0; }
  /// Raises Failure with the service's own words when it refuses, or does not answer within 5 s.
  void ExitWindows(std::uint32_t flags, std::uint32_t reserved) override;

 private:
  ConnectToBus connect_;
};

}  // namespace korval::platform
