// SPDX-License-Identifier: MIT
#include "ecu/can/CyclicFrames.h"

#include <utility>

namespace korval::ecu {

std::shared_ptr<const CyclicFrames::Watch> CyclicFrames::Add(CanIdentifier identifier, Selector selector) {
  auto watch = std::make_shared<Watch>(std::move(selector));
  auto& watches = watches_[identifier];
  std::erase_if(watches, [](const auto& weak) { return weak.expired(); });
  for (const auto& weak : watches) {
    const auto other = weak.lock();
    if (!other || !other->last_ || !watch->Selects(*other->last_)) continue;
    if (watch->last_ && other->arrival_ < watch->arrival_) continue;
    watch->last_ = other->last_;
    watch->arrival_ = other->arrival_;
  }
  watches.push_back(watch);
  return watch;
}

void CyclicFrames::FrameArrived(const CanFrame& frame, base::TimePoint now) {
  const auto found = watches_.find(frame.identifier);
  if (found == watches_.end()) return;
  for (const auto& weak : found->second) {
    const auto watch = weak.lock();
    if (!watch || !watch->Selects(frame)) continue;
    watch->last_ = frame;
    watch->arrival_ = now;
  }
  changed_->Raise();
}

void CyclicFrames::Forget() {
  for (const auto& [identifier, watches] : watches_) {
    for (const auto& weak : watches) {
      const auto watch = weak.lock();
      if (!watch) continue;
      watch->last_.reset();
      ++watch->times_left_;
    }
  }
  changed_->Raise();
}

}  // namespace korval::ecu
