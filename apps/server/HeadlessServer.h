// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <memory>
#include <system_error>

#include "HeadlessConsole.h"
#include "ServerOptions.h"
#include "host/control/ControlParts.h"
#include "host/control/ServerControl.h"

namespace korval::apps {

/// The server without a window: the control on Qt's adapters, its trace on standard output.
class HeadlessServer {
 public:
  /// The application object exists while the server does.
  explicit HeadlessServer(const ServerOptions& options);

  /// Serves until it is asked to stop and returns the exit status: 0, 1 when the start failed, or 4 when
  /// standard output could not be written, which ends the server too.
  int Run();

 private:
  void Start();
  void Stop();
  void OnOutputLost(std::error_code failure);
  int Finish(int status);

  bool debug_;
  std::atomic<int> output_error_ = 0;
  std::shared_ptr<HeadlessConsole> console_;
  host::ControlParts parts_;
  std::shared_ptr<host::ServerControl> control_;
};

}  // namespace korval::apps
