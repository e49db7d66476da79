// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "tests/support/TempFolder.h"
#include "tests/system/ServerProcess.h"

namespace korval::bench {

/// The real server, headless, on the simulated ECU, with settings of its own. Construction returns as soon
/// as it listens.
class BenchServer {
 public:
  BenchServer(const std::string& asap_folder, const std::string& korv_folder);

  int Port() const { return port_; }
  double ResidentMegabytes() const { return static_cast<double>(process_.ResidentKilobytes()) / 1024.0; }

 private:
  tests::TempFolder home_;
  tests::ServerProcess process_;
  int port_;
};

}  // namespace korval::bench
