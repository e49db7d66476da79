// SPDX-License-Identifier: MIT
#include "ecu/session/FrameRequest.h"

#include <algorithm>
#include <utility>

#include "base/ErrorNumbers.h"
#include "ecu/description/ItemCoding.h"

namespace korval::ecu {
namespace {

CyclicFrames::Selector SelectorOf(const MessagingFile::Frame& frame) {
  if (!frame.multiplexor) return {};
  return [multiplexor = *frame.multiplexor](base::ByteView bytes) {
    return DecodeRaw(multiplexor.item, bytes) == multiplexor.raw;
  };
}

// A signal of a watched frame.
class FrameItem : public viator3::DataItem {
 public:
  FrameItem(std::shared_ptr<const WatchedFrame> watched, const ItemDescription& item,
            std::weak_ptr<viator3::Request> owner)
      : watched_(std::move(watched)), item_(item), owner_(std::move(owner)) {}

  const std::string& Name() const override { return item_.name; }
  base::Variant Value() const override { return DecodeItem(item_, watched_->Bytes()); }
  std::string Text() const override { return DecodeText(item_, watched_->Bytes()); }
  std::string Unit() const override { return item_.unit; }
  void SetValue(const base::Variant& /*value*/) override { Refuse(); }
  void SetText(const std::string& /*text*/) override { Refuse(); }
  std::shared_ptr<viator3::Request> OwningRequest() const override { return owner_.lock(); }

 private:
  void Refuse() const {
    throw watched_->errors->MakeFailure(kReadOnly,
                                        item_.name + " is part of the frame " + watched_->frame.name);
  }

  std::shared_ptr<const WatchedFrame> watched_;
  const ItemDescription& item_;  // of the frame
  std::weak_ptr<viator3::Request> owner_;
};

}  // namespace

bool WatchedFrame::HasStopped() const {
  const auto patience = std::max(kMissedCycles * frame.cycle, kShortestPatience);
  return frame.cycle.count() > 0 && loop->Now() - watch->Arrival() > patience;
}

std::shared_ptr<FrameRequest> FrameRequest::Create(MessagingFile::Frame frame, CyclicFrames& frames,
                                                   std::shared_ptr<base::EventLoop> loop,
                                                   std::shared_ptr<const ErrorTable> errors) {
  auto watch = frames.Add(frame.identifier, SelectorOf(frame));
  const auto watched = std::make_shared<const WatchedFrame>(
      WatchedFrame{std::move(frame), std::move(watch), frames.Changed(), std::move(loop), std::move(errors)});
  std::shared_ptr<FrameRequest> request(new FrameRequest(watched));
  for (const ItemDescription& item : watched->frame.items) {
    request->items_.push_back(std::make_shared<FrameItem>(watched, item, request));
  }
  return request;
}

base::Task<void> FrameRequest::Await() {
  const auto watched = watched_;
  if (watched->IsThere()) co_return;
  const unsigned left = watched->watch->TimesLeft();
  const auto cycle = watched->frame.cycle.count() > 0 ? watched->frame.cycle : kUnknownCycle;
  bool is_late = false;
  const auto limit = watched->loop->CreateDeadline([&is_late, changed = watched->changed] {
    is_late = true;
    changed->Raise();
  });
  limit->Set(watched->loop->Now() + cycle + kJitter);
  while (!is_late && !watched->IsThere()) {
    co_await watched->changed->Next();
    if (watched->watch->TimesLeft() == left) continue;
    throw watched->errors->MakeFailure(
        kLinkLost, "the bus was left before the frame " + watched->frame.name + " came in");
  }
}

base::Task<void> FrameRequest::Execute() {
  if (watched_->IsThere()) co_return;
  if (!watched_->watch->Last()) {
    throw watched_->errors->MakeFailure(kNoAnswer, "the frame " + Name() + " has not come in yet");
  }
  throw watched_->errors->MakeFailure(kNoAnswer, "the frame " + Name() + ", which comes every " +
                                                     std::to_string(watched_->frame.cycle.count()) +
                                                     " ms, has stopped coming in");
}

}  // namespace korval::ecu
