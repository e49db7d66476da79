// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <tuple>

#include "base/EventLoop.h"

namespace korval::tests {

/// An event loop whose clock the test turns by hand. A wait jumps to the next timer that is due, so
/// hours of model time pass in no time and no test sleeps.
class ManualEventLoop : public base::EventLoop {
 public:
  base::TimePoint Now() const override { return now_; }
  std::unique_ptr<base::Timer> CreateTimer(std::function<void()> fire) override;
  /// Comes behind everything else that happens at its time.
  std::unique_ptr<base::Deadline> CreateDeadline(std::function<void()> passed) override;
  bool RunUntil(base::TimePoint deadline, const std::function<bool()>& done) override;

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

  base::TimePoint now_{};
  std::uint64_t sequence_ = 0;
  std::map<Key, std::function<void()>> events_;
};

}  // namespace korval::tests
