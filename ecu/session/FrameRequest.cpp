// SPDX-License-Identifier: MIT
#include "ecu/session/FrameRequest.h"

#include <algorithm>
#include <utility>

#include "ecu/description/ErrorNumbers.h"
#include "ecu/description/ItemCoding.h"

namespace korval::ecu {
namespace {

CyclicFrames::Selector SelectorOf(const MessagingFile::Frame& frame) {
  if (!frame.multiplexor) return {};
  return [multiplexor = *frame.multiplexor](base::ByteView bytes) {
    return DecodeRaw(multiplexor.item, bytes) == multiplexor.raw;
  };
}

}  // namespace

std::shared_ptr<FrameRequest> FrameRequest::Create(MessagingFile::Frame frame, CyclicFrames& frames,
                                                   std::shared_ptr<const base::EventLoop> loop,
                                                   std::shared_ptr<const ErrorTable> errors) {
  std::shared_ptr<FrameRequest> request(
      new FrameRequest(std::move(frame), frames, std::move(loop), std::move(errors)));
  const auto& description = request->messages_->description;
  for (const ItemDescription& item : description->Received()) {
    request->items_.push_back(
        std::make_shared<DataItem>(DataItem::Side::kReceived, item, request->messages_, request));
  }
  return request;
}

FrameRequest::FrameRequest(MessagingFile::Frame frame, CyclicFrames& frames,
                           std::shared_ptr<const base::EventLoop> loop,
                           std::shared_ptr<const ErrorTable> errors)
    : frame_(std::move(frame)),
      loop_(std::move(loop)),
      errors_(std::move(errors)),
      watch_(frames.Add(frame_.identifier, SelectorOf(frame_))) {
  messages_->errors = errors_;
  messages_->errors = errors_;
  messages_->description = std::make_shared<const RequestDescription>(frame_.name, frame_.items);
}

void FrameRequest::Execute() {
  const auto& frame = watch_->Last();
  if (!frame) throw errors_->MakeFailure(kNoAnswer, "the frame " + Name() + " has not come in yet");
  const auto patience = std::max(kMissedCycles * frame_.cycle, kShortestPatience);
  if (frame_.cycle.count() > 0 && loop_->Now() - watch_->Arrival() > patience) {
    throw errors_->MakeFailure(kNoAnswer, "the frame " + Name() + ", which comes every " +
                                              std::to_string(frame_.cycle.count()) +
                                              " ms, has stopped coming in");
  }
  messages_->answer = base::ByteBuffer(frame->Bytes());
}

}  // namespace korval::ecu
