// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>

#include <QAbstractEventDispatcher>
#include <QTimer>

#include "platform/QtEventLoop.h"

namespace korval::tests {

/// Qt's event loop, which a test runs until something has happened.
class WaitingQtLoop : public platform::QtEventLoop {
 public:
  /// Runs events until `done` holds or `deadline` has come, and says whether `done` holds. `done` is asked
  /// before the first event and after each. Waits may nest; an outer one ends after an inner one.
  bool RunUntil(base::TimePoint deadline, const std::function<bool()>& done) const {
    QAbstractEventDispatcher& dispatcher = *QAbstractEventDispatcher::instance();
    QTimer wake_up;  // ends the last wait for an event
    wake_up.setSingleShot(true);
    wake_up.setTimerType(Qt::PreciseTimer);
    while (!done()) {
      if (Now() >= deadline) return false;
      // Some dispatchers deliver posted events and then wait all the same, so these are delivered first.
      if (dispatcher.processEvents(QEventLoop::AllEvents) || done()) continue;
      if (!wake_up.isActive()) wake_up.start(Interval(deadline - Now()));
      dispatcher.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
  }

 private:
  static std::chrono::milliseconds Interval(base::Duration left) {
    return std::clamp(std::chrono::ceil<std::chrono::milliseconds>(left), std::chrono::milliseconds(0),
                      std::chrono::milliseconds(std::chrono::hours(1)));
  }
};

}  // namespace korval::tests
