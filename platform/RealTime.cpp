// SPDX-License-Identifier: MIT
#include "platform/RealTime.h"

#include <utility>

#include "platform/RealTimeScheduling.h"

namespace korval::platform {

std::shared_ptr<void> RealTime::Hold() {
  if (auto held = held_.lock()) return held;
  if (const std::error_code error = EnterRealTime()) {
    if (!std::exchange(refused_, true)) {
      report_("Real-time scheduling is refused (" + error.message() +
              "), the server goes on without: " + HowToAllowRealTime());
    }
    return nullptr;
  }
  std::shared_ptr<void> token(this, [](void*) { LeaveRealTime(); });  // an address that is not null
  held_ = token;
  return token;
}

}  // namespace korval::platform
