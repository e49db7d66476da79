// SPDX-License-Identifier: MIT
#include "protocol/CommandRunner.h"

#include <utility>

#include "protocol/Frame.h"

namespace korval::protocol {

bool CommandRunner::VerifyChecksum() {
  if (IsChecksumValid(frame_)) return true;
  console_.Line("erreur de checksum ");
  return false;
}

base::Task<CommandRunner::Outcome> CommandRunner::Run() {
  const base::ByteBuffer parameters(ParameterArea(frame_));
  Outcome outcome;
  outcome.code = frame_.Word(kCommandOffset);
  outcome.status = co_await dispatcher_.Dispatch(outcome.code, parameters.View(), outcome.data);
  co_return outcome;
}

void CommandRunner::Finish(const Outcome& outcome) {
  FinishReply(frame_, outcome.code, outcome.status, outcome.data);
}

bool CommandRunner::ReleaseForPowerRequest(bool close_host_session) {
  if (power_request_ == PowerRequest::kNone || !services_.ReleaseForPowerRequest(close_host_session))
    return false;
  state_.Set(SessionState::State::kIdle);
  return true;
}

void CommandRunner::ActOnPowerRequest() {
  const PowerRequest request = std::exchange(power_request_, PowerRequest::kNone);
  if (request == PowerRequest::kReboot) {
    console_.Line("Remote reboot asked ...");
    power_.PcReboot();
  } else if (request == PowerRequest::kShutdown) {
    console_.Line("Remote Shutdown asked ...");
    power_.PcShutdown();
  }
}

void CommandRunner::DropPowerRequest() {
  if (std::exchange(power_request_, PowerRequest::kNone) == PowerRequest::kNone) return;
  console_.Line("Remote power request dropped, its reply could not be sent");
}

void CommandRunner::RefusePowerRequest(const std::string& address) {
  const PowerRequest request = std::exchange(power_request_, PowerRequest::kNone);
  if (request == PowerRequest::kNone) return;
  console_.Line(std::string("Remote ") + (request == PowerRequest::kReboot ? "reboot" : "shutdown") +
                " refused: " + address + " is neither this machine nor an allowed client; name it (--allow " +
                address + ", or Allowed clients in the settings)");
}

}  // namespace korval::protocol
