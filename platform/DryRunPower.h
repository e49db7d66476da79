// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "host/power/PowerPlatform.h"

namespace korval::platform {

/// Tells what would be done to the computer, and touches nothing.
class DryRunPower : public host::PowerPlatform {
 public:
  using Trace = std::function<void(const std::string&)>;

  explicit DryRunPower(Trace trace) : trace_(std::move(trace)) {}

  bool GetVersion(host::OsVersion&) override { return false; }
  std::uint32_t GetCurrentProcess() override { return 0; }
  std::uint32_t OpenProcessToken(std::uint32_t) override { return 0; }
  std::uint32_t LookupPrivilegeValue(const std::string&) override { return 0; }
  std::uint32_t AdjustTokenPrivileges() override { return 0; }
  void ExitWindows(std::uint32_t flags, std::uint32_t) override {
    const bool reboot = (flags & kReboot) != 0;
    trace_(std::string("dry run: the computer would now ") + (reboot ? "restart" : "shut down"));
  }

 private:
  Trace trace_;
};

}  // namespace korval::platform
