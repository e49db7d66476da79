// SPDX-License-Identifier: MIT
#include "host/power/PowerControl.h"

#include <string>

#include "base/Failure.h"

namespace korval::host {
namespace {

constexpr std::uint32_t kReserved = 0xFFFFFFFF;

}  // namespace

void PowerControl::PcShutdown() { Exit(PowerPlatform::kShutdown | PowerPlatform::kForce); }

void PowerControl::PcReboot() { Exit(PowerPlatform::kReboot | PowerPlatform::kForce); }

void PowerControl::Exit(std::uint32_t flags) {
  if (IsWindows2000() || IsWindowsXP()) EnableShutdownPrivilege();
  try {
    platform_.ExitWindows(flags, kReserved);
  } catch (const base::Failure& failure) {
    // A reboot has always reported under this name as well.
    message_box_.Show("PcShutdown error : " + failure.Description(), MessageStyle::kPlain);
  }
}

void PowerControl::EnableShutdownPrivilege() {
  // Like the thread's last-error value, an error stands until another one replaces it: a step that goes well
  // does not clear it, and so shows it again.
  std::uint32_t last_error = 0;
  const auto check = [&](const char* operation, std::uint32_t error) {
    if (error != 0) last_error = error;
    if (last_error == 0) return;
    message_box_.Show(operation + std::string(" error==") + std::to_string(last_error), MessageStyle::kPlain);
  };
  check("GetCurrentProcess", platform_.GetCurrentProcess());
  check("OpenProcessToken",
        platform_.OpenProcessToken(PowerPlatform::kAdjustPrivileges | PowerPlatform::kQuery));
  check("LookupPrivilegeValue", platform_.LookupPrivilegeValue("SeShutdownPrivilege"));
  check("AdjustTokenPrivileges", platform_.AdjustTokenPrivileges());
}

bool PowerControl::IsWindows2000() { return IsNtVersion(5, 0); }

bool PowerControl::IsWindowsXP() { return IsNtVersion(5, 1); }

bool PowerControl::IsNtVersion(std::int32_t major, std::int32_t minor) {
  OsVersion version;
  return platform_.GetVersion(version) && version.platform == OsVersion::kNtFamily &&
         version.major == major && version.minor == minor;
}

}  // namespace korval::host
