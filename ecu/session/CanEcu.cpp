// SPDX-License-Identifier: MIT
#include "ecu/session/CanEcu.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "ecu/description/ErrorNumbers.h"
#include "ecu/ecufile/MessagingReader.h"

namespace korval::ecu {

void CanEcu::Send(const base::ByteBuffer& request, base::ByteBuffer& answer) {
  answer.Clear();
  throw host_->Errors().MakeFailure(
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

void CanEcu::LoadMessaging(const std::string& path) {
  const auto messaging = std::make_shared<const MessagingFile>(LoadMessagingFile(path));
  Frames frames = RequestsFor(messaging->frames);
  table_ = std::make_unique<RequestTable>(Requests(frames.begin(), frames.end()));
  frames_ = std::move(frames);
  messaging_loaded_ = true;
  host_->UseMessaging(messaging);
  for (const std::string& note : messaging->notes) host_->Note(std::string(path).append(": ").append(note));
}

}  // namespace korval::ecu
