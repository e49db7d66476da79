// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace korval::platform {

/// The folder in which the program lies that runs, links resolved; known before there is an application
/// object. Raises std::system_error where the system does not tell.
std::string ProgramFolder();

}  // namespace korval::platform
