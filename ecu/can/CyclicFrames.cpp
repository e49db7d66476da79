// SPDX-License-Identifier: MIT
#include "ecu/can/CyclicFrames.h"

#include <utility>

namespace korval::ecu {

std::shared_ptr<const CyclicFrames::Watch> CyclicFrames::Add(CanIdentifier identifier, Selector selector) {
  auto watch = std::make_shared<Watch>(std::move(selector));
  auto& watches = watches_[identifier];
  std::erase_if(watches, [](const auto& weak) { return weak.expired(); });
  watches.push_back(watch);
  return watch;
}

void CyclicFrames::FrameArrived(const CanFrame& frame, base::TimePoint now) {
  const auto found = watches_.find(frame.identifier);
  if (found == watches_.end()) return;
  for (const auto& weak : found->second) {
    const auto watch = weak.lock();
    if (!watch || (watch->selector_ && !watch->selector_(frame.Bytes()))) continue;
    watch->last_ = frame;
    watch->arrival_ = now;
  }
}

void CyclicFrames::Forget() {
  for (const auto& [identifier, watches] : watches_) {
    for (const auto& weak : watches) {
      if (const auto watch = weak.lock()) watch->last_.reset();
    }
  }
}

}  // namespace korval::ecu
