// SPDX-License-Identifier: MIT
#include "bench/Cores.h"

#include <stdexcept>

#include <sched.h>

namespace korval::bench {

std::vector<int> UsableCores() {
  cpu_set_t cores;
  sched_getaffinity(0, sizeof cores, &cores);
  std::vector<int> usable;
  for (int core = 0; core < CPU_SETSIZE; ++core) {
    if (CPU_ISSET(static_cast<unsigned>(core), &cores)) usable.push_back(core);
  }
  return usable;
}

void RunOnCore(int core) {
  cpu_set_t cores;
  CPU_ZERO(&cores);
  CPU_SET(static_cast<unsigned>(core), &cores);
  if (sched_setaffinity(0, sizeof cores, &cores) != 0) throw std::runtime_error("a core cannot be chosen");
}

}  // namespace korval::bench
