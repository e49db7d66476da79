// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "host/power/PowerPlatform.h"
#include "host/trace/MessageBox.h"

namespace korval::host {

/// Shuts the host computer down or restarts it, forcing applications to close. Failures are shown in plain
/// message boxes and otherwise ignored: the server keeps running.
class PowerControl {
 public:
  /// Both outlive the control.
  PowerControl(PowerPlatform& platform, MessageBox& message_box)
      : platform_(platform), message_box_(message_box) {}

  void PcShutdown();
  void PcReboot();
  /// Enables the shutdown privilege of the current process. Each step runs even when an earlier one failed.
  void EnableShutdownPrivilege();
  /// NT family 5.0 and 5.1, the only systems whose privilege is touched; later ones are left alone too.
  bool IsWindows2000();
  bool IsWindowsXP();

 private:
  void Exit(std::uint32_t flags);
  bool IsNtVersion(std::int32_t major, std::int32_t minor);

  PowerPlatform& platform_;
  MessageBox& message_box_;
};

}  // namespace korval::host
