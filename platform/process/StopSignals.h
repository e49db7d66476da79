// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include <QSocketNotifier>

namespace korval::platform {

/// Turns SIGINT and SIGTERM into an event of the event loop. One object at a time.
class StopSignals {
 public:
  explicit StopSignals(const std::function<void()>& on_stop);
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace korval::platform
