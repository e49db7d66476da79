// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace korval::platform {

/// Runs the events of a program whose event loop has ended, for as long as something is unfinished. Nothing
/// to do when the function is empty.
void RunWhile(const std::function<bool()>& is_unfinished);

}  // namespace korval::platform
