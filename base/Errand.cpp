// SPDX-License-Identifier: MIT
#include "base/Errand.h"

#include "base/Failure.h"

namespace korval::base {

Errand* Errand::current_ = nullptr;

void Errand::RequireWanted(const Errand* errand) {
  if (!IsWanted(errand)) throw Failure("The client that asked is gone");
}

}  // namespace korval::base
