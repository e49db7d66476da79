// SPDX-License-Identifier: MIT
#include "tests/support/ManualEventLoop.h"

#include <algorithm>
#include <optional>

namespace korval::tests {

class ManualTimer : public base::Timer {
 public:
  ManualTimer(ManualEventLoop& loop, std::function<void()> fire) : loop_(loop), fire_(std::move(fire)) {}
  ~ManualTimer() override { ManualTimer::Stop(); }
  ManualTimer(const ManualTimer&) = delete;
  ManualTimer& operator=(const ManualTimer&) = delete;

  void Start(std::chrono::microseconds delay) override {
    Stop();
    key_ = loop_.Schedule(delay, [this] {
      key_.reset();
      const std::function<void()> fire = fire_;  // firing may destroy the timer
      fire();
    });
  }
  void Stop() override {
    if (key_) loop_.events_.erase(*key_);
    key_.reset();
  }

 private:
  ManualEventLoop& loop_;
  std::function<void()> fire_;
  std::optional<ManualEventLoop::Key> key_;
};

std::unique_ptr<base::Timer> ManualEventLoop::CreateTimer(std::function<void()> fire) {
  return std::make_unique<ManualTimer>(*this, std::move(fire));
}

ManualEventLoop::Key ManualEventLoop::Schedule(base::TimePoint delay, std::function<void()> event) {
  const Key key{now_ + delay, sequence_++};
  events_.emplace(key, std::move(event));
  return key;
}

void ManualEventLoop::At(base::TimePoint delay, std::function<void()> event) {
  Schedule(delay, std::move(event));
}

bool ManualEventLoop::FireNext(base::TimePoint until) {
  const auto next = events_.begin();
  if (next == events_.end() || next->first.first > until) return false;
  now_ = std::max(now_, next->first.first);
  const std::function<void()> event = std::move(next->second);
  events_.erase(next);
  event();
  return true;
}

bool ManualEventLoop::RunUntil(base::TimePoint deadline, const std::function<bool()>& done) {
  while (!done()) {
    if (!FireNext(deadline)) {
      now_ = std::max(now_, deadline);
      return done();
    }
  }
  return true;
}

void ManualEventLoop::Advance(base::TimePoint span) {
  const base::TimePoint end = now_ + span;
  while (FireNext(end)) {
  }
  now_ = end;
}

}  // namespace korval::tests
