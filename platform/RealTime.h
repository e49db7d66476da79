// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace korval::platform {

/// Real-time scheduling of the thread that asks for it, as long as it is needed: SCHED_RR below the kernel's
/// own interrupt threads, and not for threads and processes that it starts. Memory is not locked: a page
/// fault costs less than a timer's own inaccuracy, and what files a client selects has no bound.
class RealTime {
 public:
  using Report = std::function<void(const std::string&)>;

  /// `report` is told once that the system refuses it, and what to do.
  explicit RealTime(Report report) : report_(std::move(report)) {}

  /// The calling thread has real-time scheduling until the last of the tokens is gone, where the system
  /// allows it. They are let go on the same thread.
  std::shared_ptr<void> Hold();

 private:
  Report report_;
  bool refused_ = false;
  std::weak_ptr<void> held_;
};

}  // namespace korval::platform
