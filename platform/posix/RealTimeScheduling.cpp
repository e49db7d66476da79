// SPDX-License-Identifier: MIT
#include "platform/RealTimeScheduling.h"

#include <cerrno>

#include <sched.h>

namespace korval::platform {
namespace {

// Above every usual program, and well below the kernel's interrupt threads, which have 50 and bring the
// bytes.
constexpr int kPriority = 10;

std::error_code SetScheduling(int policy, int priority) {
  sched_param parameters{};
  parameters.sched_priority = priority;
  if (::sched_setscheduler(0, policy | SCHED_RESET_ON_FORK, &parameters) == 0) return {};
  return {errno, std::generic_category()};
}

}  // namespace

std::error_code EnterRealTime() { return SetScheduling(SCHED_RR, kPriority); }

void LeaveRealTime() { SetScheduling(SCHED_OTHER, 0); }

const char* HowToAllowRealTime() {
  return "let the user have it (\"@dialout - rtprio 10\" in /etc/security/limits.d/korval.conf, then log in "
         "anew; LimitRTPRIO=10 in a systemd unit), or the program (sudo setcap cap_sys_nice+ep "
         "korval-asap-server)";
}

}  // namespace korval::platform
