// SPDX-License-Identifier: MIT
#include "base/Signal.h"

#include <algorithm>

namespace korval::base {

void Signal::Waits::Remove(Wait* wait) {
  std::erase(waiting_, wait);
  std::erase(due_, wait);
}

void Signal::Waits::Raise() {
  due_.insert(due_.end(), waiting_.begin(), waiting_.end());
  waiting_.clear();
  if (due_.empty() || std::exchange(is_deferred_, true)) return;
  loop_->Defer([self = shared_from_this()] { self->ResumeDue(); });
}

// What those who go on raise is for the next time.
void Signal::Waits::ResumeDue() {
  is_deferred_ = false;
  for (std::size_t left = due_.size(); left > 0 && !due_.empty(); --left) {
    Wait* const next = due_.front();
    due_.pop_front();
    next->Resume();
  }
}

}  // namespace korval::base
