// SPDX-License-Identifier: MIT
#pragma once

#include "base/EventLoop.h"
#include "ecu/description/EcuDescription.h"

namespace korval::ecu {

/// The value of a moving signal `time` after the simulated ECU started: a ramp from Min to Max once a
/// period, a sine that starts midway and rises, a square that is Min for half a period and then Max, or a
/// new random value each period. The noise is the same in every run.
double SignalValue(const SignalDescription& signal, base::Duration time);

}  // namespace korval::ecu
