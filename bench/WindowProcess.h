// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include <sys/types.h>

#include "tests/support/TempFolder.h"

namespace korval::bench {

/// The server with its window open and every online value shown in it, as a process of its own on the
/// simulated ECU. Construct it before any Qt object: it forks. The window is drawn where QT_QPA_PLATFORM
/// says, in memory when it says nothing.
class WindowProcess {
 public:
  /// Returns as soon as the server listens.
  WindowProcess(const std::string& asap_folder, const std::string& korv_folder);
  ~WindowProcess();
  WindowProcess(const WindowProcess&) = delete;
  WindowProcess& operator=(const WindowProcess&) = delete;

  int Port() const { return port_; }

 private:
  tests::TempFolder home_;
  int port_;
  pid_t process_;
};

}  // namespace korval::bench
