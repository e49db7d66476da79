// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "Options.h"
#include "host/control/ControlParts.h"
#include "host/control/ServerControl.h"

namespace korval::apps {

/// The control on Qt's adapters and our own diagnostic-session library.
class ControlAssembly {
 public:
  /// `views` holds the terminal, status, lists and message box; the rest is filled in here.
  ControlAssembly(const Options& options, host::ControlParts views);

  /// Initialises and shows the control. False when its settings were refused, which the person at the
  /// console was told; raises Failure when the TCP port cannot be opened.
  bool Start();
  host::ServerControl& Control() { return *control_; }

 private:
  void ChooseDiagnosticPort();

  bool debug_;
  std::shared_ptr<host::SettingsStore> settings_;
  std::shared_ptr<host::ServerControl> control_;
};

}  // namespace korval::apps
