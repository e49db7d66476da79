// SPDX-License-Identifier: MIT
#pragma once

#include "ServerOptions.h"

namespace korval::apps {

/// Loads the part of the program that has the window, and runs the server with it. Returns the exit status.
/// Raises Failure with what to do when that part cannot be loaded.
int RunWithWindow(int argc, char** argv, const ServerOptions& options);

}  // namespace korval::apps
