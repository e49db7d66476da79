// SPDX-License-Identifier: MIT
#pragma once

#include <coroutine>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "base/Task.h"

namespace korval::base {

/// The task of a job, and whether one of its steps is on the stack. It outlives its Job for as long as that
/// is so: a step is never cut short, and whatever it stands on lives until it returns.
class JobState : public std::enable_shared_from_this<JobState> {
 public:
  using Ended = std::function<void()>;

  /// Runs to the first wait; true when that was the end.
  bool Begin(Task<void> task);
  /// Goes on at a wait that is over.
  void Resume(std::coroutine_handle<> waiting);
  /// Drops the task: at once, or when the step that is on the stack has come to its next wait.
  void CallOff();
  bool IsCalledOff() const { return called_off_; }
  bool HasEnded() const { return !task_; }
  void WhenEnded(Ended ended) { ended_ = std::move(ended); }
  void SetOwner(std::weak_ptr<void> owner) { owner_ = std::move(owner); }

 private:
  void Step(std::coroutine_handle<> next);

  std::weak_ptr<void> owner_;
  std::optional<Task<void>> task_;
  Ended ended_;
  int steps_ = 0;  // on the stack
  bool called_off_ = false;
};

/// A task that nobody awaits. Destroying the job calls it off.
class Job {
 public:
  Job() = default;
  ~Job() { CallOff(); }
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;

  /// What the task works on, the job among it: held for the length of each step, in which it may be let go.
  void SetOwner(std::weak_ptr<void> owner) { owner_ = std::move(owner); }
  /// Runs `task` to its first wait. REQUIRES !IsUnderWay(). True when it has ended by then; else `ended` is
  /// called when it ends later, or has come to a wait after it was called off inside a step. What the task
  /// throws is thrown here, or out of the event in which it ends.
  bool Start(Task<void> task, JobState::Ended ended = {});
  /// A step of a job that was called off may still be on the stack: then it is under way.
  bool IsUnderWay() const { return state_ && !state_->HasEnded(); }
  bool IsCalledOff() const { return state_ && state_->IsCalledOff(); }
  void CallOff() {
    if (state_) std::shared_ptr(state_)->CallOff();
  }

  /// Runs a task to its end, whoever lets go of what.
  static void Run(Task<void> task);

 private:
  std::weak_ptr<void> owner_;
  std::shared_ptr<JobState> state_;
};

/// For an operation that blocks, and may run events meanwhile: the task that awaits it stands at a wait, so
/// it can be called off by such an event. It then goes no further.
template <typename Operation>
class Blocking {
 public:
  explicit Blocking(Operation operation) : operation_(std::move(operation)) {}

  bool await_ready() const noexcept { return false; }
  template <typename Promise>
  bool await_suspend(std::coroutine_handle<Promise> awaiting) {
    try {
      operation_();
    } catch (...) {
      thrown_ = std::current_exception();
    }
    return awaiting.promise().job->IsCalledOff();
  }
  void await_resume() const {
    if (thrown_) std::rethrow_exception(thrown_);
  }

 private:
  Operation operation_;
  std::exception_ptr thrown_;
};

}  // namespace korval::base
