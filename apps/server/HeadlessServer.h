// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "Options.h"
#include "host/control/ControlParts.h"
#include "host/control/ServerControl.h"

namespace korval::apps {

/// The server without a window: the control on Qt's adapters, its trace on standard output.
class HeadlessServer {
 public:
  explicit HeadlessServer(const Options& options);

  /// Serves until SIGINT or SIGTERM and returns the exit status: 0, or 1 when the start failed.
  int Run();

 private:
  bool Start();

  bool debug_;
  host::ControlParts parts_;
  std::shared_ptr<host::ServerControl> control_;
};

}  // namespace korval::apps
