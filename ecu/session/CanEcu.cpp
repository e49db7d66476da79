// SPDX-License-Identifier: MIT
#include "ecu/session/CanEcu.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/ErrorNumbers.h"
#include "ecu/ecufile/MessagingReader.h"
#include "ecu/kwp2000/Kwp2000Dialect.h"
#include "ecu/service/ReadTroubleCodes.h"

namespace korval::ecu {

base::Task<void> CanEcu::Send(const base::ByteBuffer& request, base::ByteBuffer& answer) {
  answer.Clear();
  throw NoRequest(request);
  co_return;
}

base::Task<viator3::Exchange> CanEcu::Refuse(base::ByteBuffer request) const {
  viator3::Exchange exchange;
  exchange.failure = NoRequest(request);
  std::swap(exchange.request, request);
  co_return exchange;
}

base::Task<void> CanEcu::ReadTroubleCodes(viator3::TroubleCodeListener& listener) {
  return ecu::ReadTroubleCodes(Kwp2000().ReadTroubleCodes(), listener,
                               [this](base::ByteBuffer request) { return Refuse(std::move(request)); });
}

base::Task<viator3::Exchange> CanEcu::ReadIdentification() { return Refuse(Kwp2000().Identification()); }

base::Failure CanEcu::NoRequest(const base::ByteBuffer& request) const {
  return host_->Errors().MakeFailure(
      kValueRefused, "the function CAN takes no diagnostic request, it was sent " + request.ToHex());
}

std::shared_ptr<viator3::DataItem> CanEcu::FindAnswerItem(const std::string& name) {
  return table_->FindAnswerItem(name);
}

// Whoever holds an item of a frame that stands in the new file too goes on with the same request.
CanEcu::Frames CanEcu::RequestsFor(const std::vector<MessagingFile::Frame>& frames) const {
  std::unordered_multimap<std::string_view, std::shared_ptr<FrameRequest>> known;
  for (const auto& request : frames_) known.emplace(request->Name(), request);
  Frames requests;
  for (const MessagingFile::Frame& frame : frames) {
    const auto [first, last] = known.equal_range(frame.name);
    const auto same =
        std::find_if(first, last, [&](const auto& entry) { return entry.second->Frame() == frame; });
    if (same == last) {
      requests.push_back(FrameRequest::Create(frame, host_->Frames(), host_->Loop(), host_->SharedErrors()));
    } else {
      requests.push_back(same->second);
      known.erase(same);
    }
  }
  return requests;
}

base::Task<void> CanEcu::LoadMessaging(std::string path) {
  const auto messaging = std::make_shared<const MessagingFile>(LoadMessagingFile(path));
  Frames frames = RequestsFor(messaging->frames);
  table_ = std::make_unique<RequestTable>(Requests(frames.begin(), frames.end()));
  frames_ = std::move(frames);
  messaging_loaded_ = true;
  host_->UseMessaging(messaging);
  for (const std::string& note : messaging->notes) host_->Note(std::string(path).append(": ").append(note));
  co_return;
}

}  // namespace korval::ecu
