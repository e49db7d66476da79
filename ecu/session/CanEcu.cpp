// SPDX-License-Identifier: MIT
#include "ecu/session/CanEcu.h"

#include <utility>

#include "ecu/description/ErrorNumbers.h"
#include "ecu/description/MessagingFile.h"
#include "ecu/session/FrameRequest.h"

namespace korval::ecu {

void CanEcu::Send(const base::ByteBuffer& request, base::ByteBuffer& answer) {
  answer.Clear();
  throw host_->Errors().MakeFailure(
      kValueRefused, "the function CAN takes no diagnostic request, it was sent " + request.ToHex());
}

std::shared_ptr<viator3::DataItem> CanEcu::FindAnswerItem(const std::string& name) {
  return table_->FindAnswerItem(name);
}

void CanEcu::LoadMessaging(const std::string& path) {
  const auto messaging = std::make_shared<const MessagingFile>(LoadMessagingFile(path));
  Requests requests;
  for (const MessagingFile::Frame& frame : messaging->frames) {
    requests.push_back(FrameRequest::Create(frame, host_->Frames(), host_->Loop(), host_->SharedErrors()));
  }
  table_ = std::make_unique<RequestTable>(std::move(requests));
  messaging_loaded_ = true;
  host_->UseMessaging(messaging);
  for (const std::string& note : messaging->notes) host_->Note(std::string(path).append(": ").append(note));
}

}  // namespace korval::ecu
