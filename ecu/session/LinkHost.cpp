// SPDX-License-Identifier: MIT
#include "ecu/session/LinkHost.h"

#include <utility>

#include "base/ErrorNumbers.h"
#include "ecu/kwp2000/Kwp2000Dialect.h"
#include "ecu/session/OpenInterface.h"

namespace korval::ecu {

LinkHost::LinkHost(SessionEnvironment environment)
    : environment_(std::move(environment)),
      port_(environment_.port),
      frames_(std::make_shared<CyclicFrames>(environment_.loop)) {}

void LinkHost::Open(const std::string& port) {
  Close();
  port_ = port;
  if (port.empty() && std::exchange(was_open_, false)) return;
  interface_ = OpenInterface(port, environment_, errors_, messaging_);
  was_open_ = true;
  interface_->HearFrames([frames = frames_, loop = environment_.loop](const CanFrame& frame) {
    frames->FrameArrived(frame, loop->Now());
  });
}

void LinkHost::Close() {
  const auto channels = std::exchange(channels_, {});
  const auto interface = std::exchange(interface_, nullptr);  // behind its links
  frames_->Forget();
  for (const OpenedChannel& opened : channels) {
    if (const auto channel = opened.channel.lock()) channel->Close();
  }
}

std::shared_ptr<ServiceChannel> LinkHost::OpenChannel(const std::shared_ptr<const EcuDescription>& ecu) {
  DiagnosticInterface& interface = RequireInterface();
  const std::string name = interface.EcuOf(ecu->Function());
  std::erase_if(channels_, [](const OpenedChannel& opened) { return opened.channel.expired(); });
  for (const OpenedChannel& opened : channels_) {
    if (!name.empty() && opened.ecu == name) return opened.channel.lock();
  }
  auto channel = std::make_shared<ServiceChannel>(environment_.loop, interface.LinkTo(ecu), Kwp2000(),
                                                  ecu->Function(), errors_);
  channels_.push_back({name, channel});
  return channel;
}

base::Task<void> LinkHost::SendFrames(std::vector<FrameToSend> frames) {
  return RequireInterface().SendFrames(std::move(frames));
}

void LinkHost::UseMessaging(std::shared_ptr<const MessagingFile> messaging) {
  messaging_ = std::move(messaging);
  if (interface_) interface_->UseMessaging(messaging_);
}

void LinkHost::Note(const std::string& text) const {
  if (environment_.on_note) environment_.on_note(text);
}

DiagnosticInterface& LinkHost::RequireInterface() {
  if (interface_) return *interface_;
  if (was_open_) throw errors_->MakeFailure(kLinkLost, "the session was closed, open its port again");
  throw errors_->MakeFailure(kNoInterface, "the session's port was never opened");
}

}  // namespace korval::ecu
