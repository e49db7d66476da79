// SPDX-License-Identifier: MIT
#pragma once

#include <system_error>

namespace korval::platform {

// Each operating system has a file of its own for this.

/// Gives the calling thread real-time scheduling, not inherited by what it starts; the error where that is
/// refused.
std::error_code EnterRealTime();
/// Gives the calling thread back the usual scheduling.
void LeaveRealTime();
/// What to do where it is refused, as the second half of a sentence.
const char* HowToAllowRealTime();

}  // namespace korval::platform
