// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace korval::host {

/// What the system says of itself.
struct OsVersion {
  static constexpr std::int32_t kWin32s = 0;
  static constexpr std::int32_t k9xFamily = 1;
  static constexpr std::int32_t kNtFamily = 2;
  /// Everything that is none of the above.
  static constexpr std::int32_t kOther = -1;

  std::int32_t major = 0;
  std::int32_t minor = 0;
  std::int32_t platform = kOther;
};

/// The seam to the operating system's power control, shaped after the calls that the shutdown of an
/// NT system takes. The privilege steps return the last-error number, 0 for success; they do nothing on
/// a system that knows no such privilege.
class PowerPlatform {
 public:
  static constexpr std::uint32_t kShutdown = 1;
  static constexpr std::uint32_t kReboot = 2;
  static constexpr std::uint32_t kForce = 4;
  static constexpr std::uint32_t kAdjustPrivileges = 32;
  static constexpr std::uint32_t kQuery = 8;

  virtual ~PowerPlatform() = default;
  /// False when the system does not tell its version.
  virtual bool GetVersion(OsVersion& version) = 0;
  virtual std::uint32_t GetCurrentProcess() = 0;
  virtual std::uint32_t OpenProcessToken(std::uint32_t access) = 0;
  virtual std::uint32_t LookupPrivilegeValue(const std::string& privilege) = 0;
  /// Enables the privilege that was looked up.
  virtual std::uint32_t AdjustTokenPrivileges() = 0;
  /// Shuts down or restarts the computer; raises Failure when the system refuses.
  virtual void ExitWindows(std::uint32_t flags, std::uint32_t reserved) = 0;
};

}  // namespace korval::host
