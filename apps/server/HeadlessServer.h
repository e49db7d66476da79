// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "ControlAssembly.h"
#include "Options.h"

namespace korval::apps {

/// The server without a window: the control on Qt's adapters, its trace on standard output.
class HeadlessServer {
 public:
  explicit HeadlessServer(const Options& options);

  /// Serves until SIGINT or SIGTERM and returns the exit status: 0, or 1 when the start failed.
  int Run();

 private:
  std::unique_ptr<ControlAssembly> assembly_;
};

}  // namespace korval::apps
