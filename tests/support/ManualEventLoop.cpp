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
    key_ = loop_.Schedule(loop_.now_ + delay, ManualEventLoop::Rank::kEvent, [this] {
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

class ManualDeadline : public base::Deadline {
 public:
  ManualDeadline(ManualEventLoop& loop, std::function<void()> passed)
      : loop_(loop), passed_(std::move(passed)) {}
  ~ManualDeadline() override { ManualDeadline::Clear(); }
  ManualDeadline(const ManualDeadline&) = delete;
  ManualDeadline& operator=(const ManualDeadline&) = delete;

  void Set(base::TimePoint due) override {
    if (key_ && due == due_) return;
    Clear();
    due_ = due;
    key_ = loop_.Schedule(std::max(due, loop_.now_), ManualEventLoop::Rank::kDeadline, [this] {
      key_.reset();
      const std::function<void()> passed = passed_;  // it may destroy the deadline
      passed();
    });
  }
  void Clear() override {
    if (key_) loop_.events_.erase(*key_);
    key_.reset();
  }

 private:
  ManualEventLoop& loop_;
  std::function<void()> passed_;
  base::TimePoint due_{};
  std::optional<ManualEventLoop::Key> key_;
};

std::unique_ptr<base::Timer> ManualEventLoop::CreateTimer(std::function<void()> fire) {
  return std::make_unique<ManualTimer>(*this, std::move(fire));
}

std::unique_ptr<base::Deadline> ManualEventLoop::CreateDeadline(std::function<void()> passed) {
  return std::make_unique<ManualDeadline>(*this, std::move(passed));
}

ManualEventLoop::Key ManualEventLoop::Schedule(base::TimePoint time, Rank rank, std::function<void()> event) {
  const Key key{time, rank, sequence_++};
  events_.emplace(key, std::move(event));
  return key;
}

void ManualEventLoop::At(base::Duration delay, std::function<void()> event) {
  Schedule(now_ + delay, Rank::kEvent, std::move(event));
}

bool ManualEventLoop::FireNext(base::TimePoint until) {
  const auto next = events_.begin();
  if (next == events_.end() || std::get<0>(next->first) > until) return false;
  now_ = std::max(now_, std::get<0>(next->first));
  const std::function<void()> event = std::move(next->second);
  events_.erase(next);
  ++handled_;
  const auto over = std::shared_ptr<void>(nullptr, [this](void*) { --handled_; });
  event();
  RunDeferred();
  return true;
}

void ManualEventLoop::Defer(std::function<void()> step) {
  deferred_.push_back(std::move(step));
  if (handled_ == 0) Schedule(now_, Rank::kEvent, [] {});
}

void ManualEventLoop::RunDeferred() {
  while (!deferred_.empty()) {
    const std::function<void()> step = std::move(deferred_.front());
    deferred_.pop_front();
    step();
  }
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

void ManualEventLoop::Advance(base::Duration span) {
  const base::TimePoint end = now_ + span;
  while (FireNext(end)) {
  }
  now_ = end;
}

}  // namespace korval::tests
