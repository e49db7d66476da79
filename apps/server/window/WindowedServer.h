// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include <QString>

#include "ServerOptions.h"
#include "host/control/ControlParts.h"
#include "window/MainWindow.h"

namespace korval::apps {

/// The server with a window: the control on its form. What nobody has chosen yet is the simulated ECU and the
/// examples' files, and the trace says so. Needs a QApplication.
class WindowedServer {
 public:
  explicit WindowedServer(const ServerOptions& options);
  WindowedServer(const WindowedServer&) = delete;
  WindowedServer& operator=(const WindowedServer&) = delete;

  /// Serves until the window is closed or a signal asks it to stop. Returns the exit status: 0, or 1 when the
  /// TCP port could not be opened at the start, which leaves the window open, so that another port can be
  /// chosen there.
  int Run();
  MainWindow& Window() { return *window_; }

 private:
  void TraceLine(const std::string& text);
  void OnShowFailed(const QString& description);

  host::ControlParts parts_;
  std::optional<MainWindow> window_;
  int status_ = 0;
};

}  // namespace korval::apps
