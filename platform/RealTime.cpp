// SPDX-License-Identifier: MIT
#include "platform/RealTime.h"

#include <cerrno>
#include <system_error>
#include <utility>

#ifdef __linux__
#include <sched.h>
#endif

namespace korval::platform {
namespace {

#ifdef __linux__
// Above every usual program, and well below the kernel's interrupt threads, which have 50 and bring the
// bytes.
constexpr int kPriority = 10;

std::error_code SetScheduling(int policy, int priority) {
  sched_param parameters{};
  parameters.sched_priority = priority;
  if (::sched_setscheduler(0, policy | SCHED_RESET_ON_FORK, &parameters) == 0) return {};
  return {errno, std::generic_category()};
}

std::error_code Enter() { return SetScheduling(SCHED_RR, kPriority); }
void Leave() { SetScheduling(SCHED_OTHER, 0); }

constexpr char kWhatToDo[] =
    "let the user have it (\"@dialout - rtprio 10\" in /etc/security/limits.d/korval.conf, then log in anew; "
    "LimitRTPRIO=10 in a systemd unit), or the program (sudo setcap cap_sys_nice+ep korval-asap-server)";
#else
std::error_code Enter() { return std::make_error_code(std::errc::not_supported); }
void Leave() {}

constexpr char kWhatToDo[] = "start the server without --realtime";
#endif

}  // namespace

std::shared_ptr<void> RealTime::Hold() {
  if (auto held = held_.lock()) return held;
  if (const std::error_code error = Enter()) {
    if (!std::exchange(refused_, true)) {
      report_("Real-time scheduling is refused (" + error.message() +
              "), the server goes on without: " + kWhatToDo);
    }
    return nullptr;
  }
  std::shared_ptr<void> token(this, [](void*) { Leave(); });  // an address that is not null
  held_ = token;
  return token;
}

}  // namespace korval::platform
