// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "base/EventLoop.h"
#include "host/trace/StatusView.h"

namespace korval::host {

/// Shows in the status bar for how long the serial port has been open, once a second.
class ConnectionClock {
 public:
  /// Both outlive the clock.
  ConnectionClock(base::EventLoop& loop, StatusView& view);

  /// `owner` owns the clock and is held for the length of a tick.
  void Bind(const std::weak_ptr<void>& owner) { owner_ = owner; }
  void Start();
  /// Stops and empties the panel.
  void Stop();

 private:
  void Tick();

  base::EventLoop& loop_;
  StatusView& view_;
  std::weak_ptr<void> owner_;
  base::TimePoint start_{};
  std::unique_ptr<base::Timer> timer_;
};

}  // namespace korval::host
