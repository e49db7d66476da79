// SPDX-License-Identifier: MIT
#pragma once

#include "ServerOptions.h"

namespace korval::apps {

/// Runs the server with a window and returns the exit status. Without a display it ends the process with a
/// sentence on standard error and exit status 1.
int RunWindow(int argc, char** argv, const ServerOptions& options);

}  // namespace korval::apps
