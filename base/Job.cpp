// SPDX-License-Identifier: MIT
#include "base/Job.h"

namespace korval::base {

bool JobState::Begin(Task<void> task) {
  task_.emplace(std::move(task));
  task_->handle_.promise().job = this;
  Step(task_->handle_);
  return HasEnded();
}

void JobState::Resume(std::coroutine_handle<> waiting) {
  const auto self = shared_from_this();
  const auto owner = owner_.lock();
  Step(waiting);
  if (!HasEnded()) return;
  if (const Ended ended = std::exchange(ended_, nullptr)) ended();
}

void JobState::Step(std::coroutine_handle<> next) {
  ++steps_;
  next.resume();
  if (--steps_ > 0) return;
  if (!task_->handle_.done() && !called_off_) return;
  const Task<void> over = *std::exchange(task_, std::nullopt);
  const bool is_done = over.handle_.done();
  if (is_done && over.handle_.promise().thrown && !called_off_)
    std::rethrow_exception(over.handle_.promise().thrown);
}

void JobState::CallOff() {
  called_off_ = true;
  if (steps_ > 0 || !task_) return;
  ended_ = nullptr;
  task_.reset();
}

bool Job::Start(Task<void> task, JobState::Ended ended) {
  state_ = std::make_shared<JobState>();
  state_->SetOwner(owner_);
  const auto state = state_;  // this may be destroyed inside the step
  if (state->Begin(std::move(task))) return true;
  state->WhenEnded(std::move(ended));
  return false;
}

namespace {

// Holds the state for as long as the task is under way: the frame that owns it is the task's own.
Task<void> Held(std::shared_ptr<JobState>, Task<void> task) { co_await task; }

}  // namespace

void Job::Run(Task<void> task) {
  const auto state = std::make_shared<JobState>();
  state->Begin(Held(state, std::move(task)));
}

}  // namespace korval::base
