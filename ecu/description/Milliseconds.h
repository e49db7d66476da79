// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

namespace korval::ecu {

using Milliseconds = std::chrono::milliseconds;

}  // namespace korval::ecu
