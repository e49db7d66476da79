// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

namespace korval::bench {

/// The cores that this process may use.
std::vector<int> UsableCores();
/// Settles the calling process on a core, and the processes that it starts later.
void RunOnCore(int core);

}  // namespace korval::bench
