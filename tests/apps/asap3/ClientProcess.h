// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

#include "tests/support/TempFolder.h"

namespace korval::tests {

/// The command line client as a process of its own. The destructor kills what still runs.
class ClientProcess {
 public:
  explicit ClientProcess(const std::vector<std::string>& arguments);
  ~ClientProcess();
  ClientProcess(const ClientProcess&) = delete;
  ClientProcess& operator=(const ClientProcess&) = delete;

  void Signal(int number) const;
  /// Waits for the end and gives the exit status, or 128 and more when a signal ended the process.
  int ExitStatus();
  /// What it printed; whole once it has ended.
  std::string Output() const;
  std::string Errors() const;

 private:
  TempFolder folder_;
  pid_t process_ = -1;
  bool ended_ = false;
};

}  // namespace korval::tests
