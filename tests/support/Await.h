// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <optional>
#include <stdexcept>
#include <utility>

#include "base/Job.h"
#include "base/Task.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::tests {

/// What became of a task.
template <typename Result>
struct Awaited {
  std::optional<Result> result;
  std::exception_ptr thrown;
};

template <typename Result>
base::Task<void> Keep(base::Task<Result> task, Awaited<Result>& awaited) {
  try {
    awaited.result = co_await task;
  } catch (...) {
    awaited.thrown = std::current_exception();
  }
}

inline base::Task<bool> Done(base::Task<void> task) {
  co_await task;
  co_return true;
}

/// Runs a task to its end, and the events of the loop that it waits for; its failure is raised.
template <typename Loop, typename Result>
Result Await(Loop& loop, base::Task<Result> task) {
  Awaited<Result> awaited;
  base::Job job;
  if (!job.Start(Keep(std::move(task), awaited))) {
    loop.RunUntil(base::TimePoint::max(), [&] { return !job.IsUnderWay(); });
  }
  if (awaited.thrown) std::rethrow_exception(awaited.thrown);
  return std::move(awaited.result).value();
}

template <typename Loop>
void Await(Loop& loop, base::Task<void> task) {
  Await(loop, Done(std::move(task)));
}

struct NoLoop {
  template <typename Done>
  bool RunUntil(base::TimePoint /*deadline*/, const Done& /*done*/) {
    throw std::logic_error("the task waits, and the test has no loop");
  }
};

/// On the model clock of the test, if it has one.
template <typename Result>
Result Await(base::Task<Result> task) {
  if (ManualEventLoop::Current()) return Await(*ManualEventLoop::Current(), std::move(task));
  NoLoop none;
  return Await(none, std::move(task));
}

}  // namespace korval::tests
