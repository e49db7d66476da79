// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "base/EventLoop.h"
#include "base/Job.h"
#include "base/Signal.h"
#include "base/Task.h"

namespace korval::hosted {

/// The blocking operations of one host session, one at a time: an operation that runs events while it waits
/// is not called anew from inside itself.
class Calls : public std::enable_shared_from_this<Calls> {
 public:
  using Operation = std::function<void()>;

  explicit Calls(std::shared_ptr<base::EventLoop> loop) : loop_(std::move(loop)), ended_(loop_) {}

  /// Does `operation` when no other one is under way. What it works on it holds.
  base::Task<void> Do(Operation operation);
  /// Does `operation` when the event that is being handled is over, also inside another one.
  base::Task<void> Interrupt(Operation operation);

 private:
  struct Call;

  std::shared_ptr<base::EventLoop> loop_;
  base::Signal ended_;
  bool is_under_way_ = false;
};

}  // namespace korval::hosted
