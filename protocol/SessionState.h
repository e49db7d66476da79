// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "host/trace/StatusView.h"

namespace korval::protocol {

/// The client's progress through a session, and its display.
class SessionState {
 public:
  enum class State : std::int32_t { kIdle = 0, kInit = 1, kIdentify = 2, kFileSelected = 3 };

  explicit SessionState(host::StatusView& view) : view_(view) {}

  State Current() const { return state_; }
  void Set(State state);
  /// Keeps who the client says it is: version 0x0201 is 2.1.
  void SetRemote(std::int32_t version, const std::string& system_name);

 private:
  std::string RemoteText() const;

  host::StatusView& view_;
  State state_ = State::kIdle;
  std::int32_t remote_version_ = 0;
  std::string remote_name_;
};

}  // namespace korval::protocol
