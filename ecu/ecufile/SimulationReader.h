// SPDX-License-Identifier: MIT
#pragma once

#include <pugixml.hpp>

#include "ecu/description/SimulationDescription.h"

namespace korval::ecu {

/// A Simulation element. What cannot be used is left out, or counts as absent.
SimulationDescription ReadSimulation(const pugi::xml_node& node);

}  // namespace korval::ecu
