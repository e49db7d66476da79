// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace korval::platform {

/// Whether two paths lead to the same device, whatever link or name either goes by. Each operating system has
/// a file of its own for this.
bool IsSameDevice(const std::string& one, const std::string& other);

}  // namespace korval::platform
