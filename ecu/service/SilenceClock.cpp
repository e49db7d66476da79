// SPDX-License-Identifier: MIT
#include "ecu/service/SilenceClock.h"

#include <chrono>
#include <utility>

namespace korval::ecu {

SilenceClock::SilenceClock(std::shared_ptr<base::EventLoop> loop, Events events)
    : loop_(std::move(loop)), events_(std::move(events)) {}

void SilenceClock::Start(base::Duration silence) {
  length_ = silence;
  if (length_ == base::Duration::zero()) return;
  if (!timer_) timer_ = loop_->CreateTimer([this] { Look(); });
  timer_->Start(std::chrono::ceil<std::chrono::microseconds>(length_));
}

void SilenceClock::Look() {
  if (!events_.is_wanted()) return;
  const base::Duration left = events_.is_talking() ? length_ : length_ - SinceLast();
  if (left > base::Duration::zero()) {
    return timer_->Start(std::chrono::ceil<std::chrono::microseconds>(left));
  }
  events_.on_silence();
}

}  // namespace korval::ecu
