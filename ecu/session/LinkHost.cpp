// SPDX-License-Identifier: MIT
#include "ecu/session/LinkHost.h"

#include <utility>

#include "ecu/description/ErrorNumbers.h"
#include "ecu/session/OpenInterface.h"

namespace korval::ecu {

LinkHost::LinkHost(SessionEnvironment environment)
    : environment_(std::move(environment)), port_(environment_.port) {}

void LinkHost::Open(const std::string& port) {
  Close();
  port_ = port;
  if (port.empty() && std::exchange(was_open_, false)) return;
  interface_ = OpenInterface(port, environment_, *errors_);
  was_open_ = true;
}

void LinkHost::Close() {
  const auto channels = std::exchange(channels_, {});
  interface_.reset();
  for (const auto& weak : channels) {
    if (const auto channel = weak.lock()) channel->Close();
  }
}

std::shared_ptr<Channel> LinkHost::OpenChannel(const std::shared_ptr<const EcuDescription>& ecu) {
  auto link = RequireInterface().LinkTo(ecu);
  auto channel = std::make_shared<Channel>(environment_.loop, std::move(link), ecu->Function(), errors_);
  std::erase_if(channels_, [](const std::weak_ptr<Channel>& weak) { return weak.expired(); });
  channels_.push_back(channel);
  return channel;
}

void LinkHost::SendFrame(std::int32_t identifier, base::ByteView data) {
  RequireInterface().SendFrame(identifier, data);
}

DiagnosticInterface& LinkHost::RequireInterface() {
  if (interface_) return *interface_;
  if (was_open_) throw errors_->MakeFailure(kLinkLost, "the session was closed, open its port again");
  throw errors_->MakeFailure(kNoInterface, "the session's port was never opened");
}

}  // namespace korval::ecu
