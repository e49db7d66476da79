// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <tuple>
#include <utility>

#include "base/EventLoop.h"

namespace korval::tests {

/// An event loop whose clock the test turns by hand. A wait jumps to the next timer that is due, so
/// hours of model time pass in no time and no test sleeps.
class ManualEventLoop : public base::EventLoop {
 public:
  ManualEventLoop() : before_(std::exchange(current_, this)) {}
  ~ManualEventLoop() override { current_ = before_; }
  ManualEventLoop(const ManualEventLoop&) = delete;
  ManualEventLoop& operator=(const ManualEventLoop&) = delete;

  /// The last one that is there; null when none is.
  static ManualEventLoop* Current() { return current_; }

  base::TimePoint Now() const override { return now_; }
  std::unique_ptr<base::Timer> CreateTimer(std::function<void()> fire) override;
  /// Comes behind everything else that happens at its time.
  std::unique_ptr<base::Deadline> CreateDeadline(std::function<void()> passed) override;
  void Defer(std::function<void()> step) override;

  /// Runs events until `done` holds or `deadline` has come, and says whether `done` holds.
  bool RunUntil(base::TimePoint deadline, const std::function<bool()>& done);

  /// Runs `event` once the clock stands `delay` later; for what arrives from outside in the middle of a wait.
  void At(base::Duration delay, std::function<void()> event);
  /// Turns the clock and fires what falls due on the way.
  void Advance(base::Duration span);
  std::size_t PendingEvents() const { return events_.size(); }

 private:
  friend class ManualTimer;
  friend class ManualDeadline;
  enum class Rank { kEvent, kDeadline };
  using Key = std::tuple<base::TimePoint, Rank, std::uint64_t>;

  Key Schedule(base::TimePoint time, Rank rank, std::function<void()> event);
  bool FireNext(base::TimePoint until);
  void RunDeferred();

  base::TimePoint now_{};
  inline static ManualEventLoop* current_ = nullptr;
  ManualEventLoop* before_;
  std::uint64_t sequence_ = 0;
  std::map<Key, std::function<void()>> events_;
  int handled_ = 0;  // events on the stack
  std::deque<std::function<void()>> deferred_;
};

}  // namespace korval::tests
