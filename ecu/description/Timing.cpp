// SPDX-License-Identifier: MIT
#include "ecu/description/Timing.h"

#include <algorithm>

#include "base/NumberText.h"

namespace korval::ecu {

Timing Timing::Read(const pugi::xml_node& node) {
  Timing timing;
  for (const TimingParameter& parameter : kTimingParameters) {
    const auto value = base::ReadInteger(node.attribute(parameter.attribute).value());
    if (value && *value >= parameter.lowest && *value <= parameter.highest) timing.*parameter.value = value;
  }
  return timing;
}

Milliseconds Timing::Value(Number Timing::*number) const {
  if (this->*number) return Milliseconds(*(this->*number));
  const auto parameter =
      std::find_if(kTimingParameters.begin(), kTimingParameters.end(),
                   [number](const TimingParameter& entry) { return entry.value == number; });
  return Milliseconds(parameter == kTimingParameters.end() ? 0 : parameter->fallback);
}

}  // namespace korval::ecu
