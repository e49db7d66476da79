// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "host/trace/StatusView.h"

namespace korval::fuzz {

/// A status view that keeps only what it shows of the client's session.
class SessionStatus : public host::StatusView {
 public:
  void ShowSessionStatus(const std::string& text) override { text_ = text; }
  void ShowRemoteSystem(const std::string&) override {}
  void ShowPanel(const std::string&, const std::string&) override {}
  void ShowConnected(bool) override {}

  bool IsFileSelected() const { return text_ == "Status: Select File"; }

 private:
  std::string text_;
};

}  // namespace korval::fuzz
