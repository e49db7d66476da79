// SPDX-License-Identifier: MIT
#include "protocol/SessionState.h"

namespace korval::protocol {

void SessionState::Set(State state) {
  state_ = state;
  switch (state) {
    case State::kIdle:
      view_.ShowSessionStatus("Status: Idle");
      view_.ShowRemoteSystem("");
      view_.ShowPanel("Status", "Wait init");
      break;
    case State::kInit:
      view_.ShowSessionStatus("Status: Init");
      view_.ShowPanel("Status", "Init");
      break;
    case State::kIdentify:
      view_.ShowSessionStatus("Status: Identify");
      view_.ShowRemoteSystem(RemoteText());
      break;
    case State::kFileSelected:
      view_.ShowSessionStatus("Status: Select File");
      break;
  }
}

void SessionState::SetRemote(std::int32_t version, const std::string& system_name) {
  remote_version_ = version;
  remote_name_ = system_name;
}

std::string SessionState::RemoteText() const {
  return "Remote system name : " + remote_name_ + " Version " + std::to_string(remote_version_ / 256) + "." +
         std::to_string(remote_version_ % 256);
}

}  // namespace korval::protocol
