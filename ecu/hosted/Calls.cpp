// SPDX-License-Identifier: MIT
#include "ecu/hosted/Calls.h"

#include <utility>

namespace korval::hosted {

struct Calls::Call {
  explicit Call(Calls& of) : calls(of) { calls.is_under_way_ = true; }
  ~Call() {
    calls.is_under_way_ = false;
    calls.ended_.Raise();
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  Calls& calls;
};

base::Task<void> Calls::Do(Operation operation) {
  const auto self = shared_from_this();
  while (is_under_way_) co_await ended_.Next();
  const Call call(*this);
  base::Blocking blocking(std::move(operation));
  co_await blocking;
}

base::Task<void> Calls::Interrupt(Operation operation) {
  const auto loop = loop_;
  co_await base::EndOfEvent(*loop);
  base::Blocking blocking(std::move(operation));
  co_await blocking;
}

}  // namespace korval::hosted
