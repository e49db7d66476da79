// SPDX-License-Identifier: MIT
#include "base/Signal.h"

#include <algorithm>

namespace korval::base {

void Signal::Waits::Remove(Wait* wait) {
  std::erase(waiting_, wait);
  std::erase(due_, wait);
}

void Signal::Waits::Raise() {
  if (waiting_.empty()) return;
  due_.insert(due_.end(), waiting_.begin(), waiting_.end());
  waiting_.clear();
  DeferDue();
}

// One at a time, each as a step of its own: what one throws is none of the others' business.
void Signal::Waits::ResumeDue() {
  is_deferred_ = false;
  if (due_.empty()) return;
  Wait* const next = due_.front();
  due_.pop_front();
  if (!due_.empty()) DeferDue();
  next->Resume();
}

void Signal::Waits::DeferDue() {
  if (std::exchange(is_deferred_, true)) return;
  loop_->Defer([self = shared_from_this()] { self->ResumeDue(); });
}

}  // namespace korval::base
