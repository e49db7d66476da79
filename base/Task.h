// SPDX-License-Identifier: MIT
// Work that waits without holding up the thread: a coroutine. It runs on the event loop's thread, step by
// step from one wait to the next, and is dropped, never cut short inside a step, when nobody wants it any
// more.
//
//   Task<Answer> Ask(...)      what is awaited:  `const Answer answer = co_await Ask(...);`
//   Job                        what is under way: holds the task that nobody awaits (Job.h)
//   Signal                     what is waited for (Signal.h)
//
// A task begins when it is awaited, so its arguments by reference have to outlive the whole expression only.
// What it stands on between two waits it holds itself: events happen meanwhile.
#pragma once

#include <coroutine>
#include <exception>
#include <optional>
#include <utility>

namespace korval::base {

class JobState;

template <typename Result>
class Task;

/// What a task's frame knows of its surroundings. For Task.h, Job.h and Signal.h.
class TaskPromise {
 public:
  // The one who awaits goes on where this one ends; unless it still stands in its own await_suspend, whose
  // return lets it go on without a deeper stack.
  struct GoOn {
    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    void await_suspend(std::coroutine_handle<Promise> ended) const noexcept {
      const TaskPromise& promise = ended.promise();
      if (!promise.starting && promise.awaiting) promise.awaiting.resume();
    }
    void await_resume() const noexcept {}
  };

  std::suspend_always initial_suspend() const noexcept { return {}; }
  GoOn final_suspend() const noexcept { return {}; }
  void unhandled_exception() noexcept { thrown = std::current_exception(); }

  JobState* job = nullptr;  ///< to which it belongs, set before it begins
  std::coroutine_handle<> awaiting;
  bool starting = false;
  std::exception_ptr thrown;
};

template <typename Result>
class ResultPromise : public TaskPromise {
 public:
  Task<Result> get_return_object();
  template <typename Value>
  void return_value(Value&& value) {
    result_.emplace(std::forward<Value>(value));
  }
  Result Take() { return *std::move(result_); }

 private:
  std::optional<Result> result_;
};

template <>
class ResultPromise<void> : public TaskPromise {
 public:
  Task<void> get_return_object();
  void return_void() const noexcept {}
  void Take() const noexcept {}
};

/// Work under way or about to begin, with its result. What is thrown in it is thrown where it is awaited.
template <typename Result = void>
class [[nodiscard]] Task {
 public:
  using promise_type = ResultPromise<Result>;
  using Handle = std::coroutine_handle<promise_type>;

  explicit Task(Handle handle) : handle_(handle) {}
  Task(Task&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Task& operator=(Task&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Task() {
    if (handle_) handle_.destroy();
  }
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;

  bool await_ready() const noexcept { return false; }
  template <typename Promise>
  bool await_suspend(std::coroutine_handle<Promise> awaiting) {
    promise_type& promise = handle_.promise();
    promise.job = awaiting.promise().job;
    promise.awaiting = awaiting;
    promise.starting = true;
    handle_.resume();
    promise.starting = false;
    return !handle_.done();
  }
  Result await_resume() {
    promise_type& promise = handle_.promise();
    if (promise.thrown) std::rethrow_exception(promise.thrown);
    return promise.Take();
  }

 private:
  friend class JobState;
  Handle handle_;
};

template <typename Result>
Task<Result> ResultPromise<Result>::get_return_object() {
  return Task<Result>(std::coroutine_handle<ResultPromise<Result>>::from_promise(*this));
}

inline Task<void> ResultPromise<void>::get_return_object() {
  return Task<void>(std::coroutine_handle<ResultPromise<void>>::from_promise(*this));
}

}  // namespace korval::base
