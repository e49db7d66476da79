// SPDX-License-Identifier: MIT
#pragma once

#include <coroutine>
#include <deque>
#include <memory>
#include <utility>

#include "base/EventLoop.h"
#include "base/Job.h"

namespace korval::base {

/// Something has changed: what tasks wait for. They look again for themselves whether it is what they wait
/// for, in the order in which they came.
class Signal {
 public:
  class Wait;

  explicit Signal(std::shared_ptr<EventLoop> loop) : waits_(std::make_shared<Waits>(std::move(loop))) {}
  ~Signal() = default;
  Signal(const Signal&) = delete;
  Signal& operator=(const Signal&) = delete;

  /// Lets everybody who waits now go on, as soon as the event that is being handled is over.
  void Raise() { waits_->Raise(); }
  /// `co_await signal.Next()` ends with the next Raise. The signal need not live that long.
  Wait Next();

 private:
  class Waits : public std::enable_shared_from_this<Waits> {
   public:
    explicit Waits(std::shared_ptr<EventLoop> loop) : loop_(std::move(loop)) {}
    void Raise();
    void Add(Wait* wait) { waiting_.push_back(wait); }
    void Remove(Wait* wait);

   private:
    void ResumeDue();
    void DeferDue();

    std::shared_ptr<EventLoop> loop_;
    std::deque<Wait*> waiting_;
    std::deque<Wait*> due_;
    bool is_deferred_ = false;
  };

  std::shared_ptr<Waits> waits_;
};

/// One wait of one task.
class Signal::Wait {
 public:
  explicit Wait(std::shared_ptr<Waits> waits) : waits_(std::move(waits)) {}
  ~Wait() {
    if (waiting_) waits_->Remove(this);
  }
  Wait(const Wait&) = delete;
  Wait& operator=(const Wait&) = delete;

  bool await_ready() const noexcept { return false; }
  template <typename Promise>
  void await_suspend(std::coroutine_handle<Promise> waiting) {
    waiting_ = waiting;
    job_ = waiting.promise().job->weak_from_this();
    waits_->Add(this);
  }
  void await_resume() const noexcept {}

 private:
  friend class Waits;
  void Resume() {
    const auto job = job_.lock();  // alive, for this is a part of its task
    job->Resume(std::exchange(waiting_, nullptr));
  }

  std::shared_ptr<Waits> waits_;
  std::coroutine_handle<> waiting_;
  std::weak_ptr<JobState> job_;
};

/// `co_await EndOfEvent(loop)` goes on when the event that is being handled is over: what comes then stands
/// on nobody's stack.
class EndOfEvent {
 public:
  explicit EndOfEvent(EventLoop& loop) : loop_(loop) {}

  bool await_ready() const noexcept { return false; }
  template <typename Promise>
  void await_suspend(std::coroutine_handle<Promise> waiting) {
    loop_.Defer([waiting, job = waiting.promise().job->weak_from_this()] {
      const auto held = job.lock();
      if (held && !held->HasEnded()) held->Resume(waiting);
    });
  }
  void await_resume() const noexcept {}

 private:
  EventLoop& loop_;
};

inline Signal::Wait Signal::Next() { return Wait(waits_); }

}  // namespace korval::base
