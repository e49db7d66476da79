// SPDX-License-Identifier: MIT
#include "ecu/description/Timing.h"

#include <algorithm>

namespace korval::ecu {

Milliseconds Timing::Value(Number Timing::*number) const {
  if (this->*number) return Milliseconds(*(this->*number));
  const auto parameter =
      std::find_if(kTimingParameters.begin(), kTimingParameters.end(),
                   [number](const TimingParameter& entry) { return entry.value == number; });
  return Milliseconds(parameter == kTimingParameters.end() ? 0 : parameter->fallback);
}

}  // namespace korval::ecu
