// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include "base/EventLoop.h"

namespace korval::platform {

/// Qt's event loop of the calling thread. The application object exists while one is used.
class QtEventLoop : public base::EventLoop {
 public:
  base::TimePoint Now() const override;
  std::unique_ptr<base::Timer> CreateTimer(std::function<void()> fire) override;
  std::unique_ptr<base::Deadline> CreateDeadline(std::function<void()> passed) override;
  void Defer(std::function<void()> step) override;

 private:
  QObject deferred_;  // its steps go with the loop
};

}  // namespace korval::platform
