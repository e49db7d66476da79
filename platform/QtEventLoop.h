// SPDX-License-Identifier: MIT
#pragma once

#include "base/EventLoop.h"

namespace korval::platform {

/// Qt's event loop of the calling thread. A wait runs nested event processing and goes on to its end even
/// when the application was told to quit meanwhile. The application object exists while one is used.
class QtEventLoop : public base::EventLoop {
 public:
  base::TimePoint Now() const override;
  std::unique_ptr<base::Timer> CreateTimer(std::function<void()> fire) override;
  std::unique_ptr<base::Deadline> CreateDeadline(std::function<void()> passed) override;
  bool RunUntil(base::TimePoint deadline, const std::function<bool()>& done) override;
};

}  // namespace korval::platform
