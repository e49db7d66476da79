// SPDX-License-Identifier: MIT
#include "ecu/description/EcuDescription.h"

namespace korval::ecu {

const SimulationDescription& EcuDescription::Simulation() const {
  static const SimulationDescription none;
  const auto& simulation = parts_.simulation.Get();
  return simulation ? *simulation : none;
}

}  // namespace korval::ecu
