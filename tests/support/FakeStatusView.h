// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/trace/StatusView.h"

namespace korval::tests {

/// Keeps what is shown, and every text that a panel ever showed.
class FakeStatusView : public host::StatusView {
 public:
  void ShowSessionStatus(const std::string& text) override { session_status = text; }
  void ShowRemoteSystem(const std::string& text) override { remote_system = text; }
  void ShowPanel(const std::string& key, const std::string& text) override {
    panels[key] = text;
    history[key].push_back(text);
  }
  void ShowConnected(bool is_connected) override { connected = is_connected; }

  std::string session_status;
  std::string remote_system;
  std::map<std::string, std::string> panels;
  std::map<std::string, std::vector<std::string>> history;
  bool connected = false;
};

}  // namespace korval::tests
