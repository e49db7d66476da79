// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace korval::host {

/// Where the console shows the state of things.
class StatusView {
 public:
  virtual ~StatusView() = default;
  /// The session's state, for example "Status: Idle".
  virtual void ShowSessionStatus(const std::string& text) = 0;
  /// Who the client says it is, "" when nobody has identified.
  virtual void ShowRemoteSystem(const std::string& text) = 0;
  /// A panel of the status bar, by its key: "Status", "Settings", "timeout" or "ConnectTime".
  virtual void ShowPanel(const std::string& key, const std::string& text) = 0;
  /// Which of the two images is in front: the serial line is open or closed.
  virtual void ShowConnected(bool connected) = 0;
};

}  // namespace korval::host
