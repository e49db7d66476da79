// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace korval::tests {

/// Makes a pipe that stands among the files. False on a system that has none there; raises std::system_error
/// where it cannot be made.
bool MakeNamedPipe(const std::string& path);

}  // namespace korval::tests
