// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include <QSocketNotifier>

namespace korval::platform {

/// Turns SIGINT, SIGTERM and SIGHUP into an event of the event loop; SIGHUP only where whoever started the
/// program does not have it ignored (nohup). After the first of them another SIGINT or SIGTERM ends the
/// process, whatever the event loop does. One object at a time.
class StopSignals {
 public:
  /// `on_stop` runs once.
  explicit StopSignals(const std::function<void()>& on_stop);
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace korval::platform
