// SPDX-License-Identifier: MIT
#pragma once

namespace korval::protocol {

/// What a command asked of the host PC (`PowerRequest`); acted on once its reply has been sent.
enum class PowerRequest { kNone = 0, kReboot = 1, kShutdown = 2 };

}  // namespace korval::protocol
