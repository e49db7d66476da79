// SPDX-License-Identifier: MIT
#pragma once

#include "host/power/PowerPlatform.h"

namespace korval::platform {

/// The power control of a system without privileges to enable: its power service itself decides who may.
/// Never of the NT family.
class UnprivilegedPower : public host::PowerPlatform {
 public:
  bool GetVersion(host::OsVersion& version) override {
    version = {};
    return true;
  }
  std::uint32_t GetCurrentProcess() override { return 0; }
  std::uint32_t OpenProcessToken(std::uint32_t) override { return 0; }
  std::uint32_t LookupPrivilegeValue(const std::string&) override { return 0; }
  std::uint32_t AdjustTokenPrivileges() override { return 0; }
};

}  // namespace korval::platform
