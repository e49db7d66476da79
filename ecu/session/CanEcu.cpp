// SPDX-License-Identifier: MIT
#include "ecu/session/CanEcu.h"

#include <utility>

#include "ecu/description/ErrorNumbers.h"
#include "ecu/description/MessagingFile.h"
#include "ecu/session/Request.h"

namespace korval::ecu {

void CanEcu::Send(const base::ByteBuffer& request, base::ByteBuffer& answer) {
  answer.Clear();
  throw errors_->MakeFailure(kValueRefused,
                             "the function CAN takes no diagnostic request, it was sent " + request.ToHex());
}

std::shared_ptr<viator3::DataItem> CanEcu::FindAnswerItem(const std::string& name) {
  return table_->FindAnswerItem(name);
}

void CanEcu::LoadMessaging(const std::string& path) {
  MessagingFile file = LoadMessagingFile(path);
  Requests requests;
  for (MessagingFile::Frame& frame : file.frames) {
    requests.push_back(Request::Create(
        std::make_shared<const RequestDescription>(std::move(frame.name), std::move(frame.items)), nullptr,
        errors_));
  }
  table_ = std::make_unique<RequestTable>(std::move(requests));
  messaging_loaded_ = true;
}

}  // namespace korval::ecu
