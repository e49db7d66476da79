// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ecu/description/FunctionDescription.h"
#include "ecu/description/Lazy.h"
#include "ecu/description/RequestDescription.h"
#include "ecu/description/SimulationDescription.h"

namespace korval::ecu {

/// What is known of one ECU function, whatever kind of file says it. A file may hold tens of thousands of
/// items and be selected for a few of them, so all but the function itself may be made when it is first asked
/// for. Immutable to the outside.
class EcuDescription {
 public:
  struct Parts {
    FunctionDescription function;
    Lazy<std::vector<RequestDescription>> requests;
    Lazy<std::vector<std::string>> reference_data;
    Lazy<std::optional<SimulationDescription>> simulation;
  };

  explicit EcuDescription(Parts parts) : parts_(std::move(parts)) {}

  const FunctionDescription& Function() const { return parts_.function; }
  const std::vector<RequestDescription>& Requests() const { return parts_.requests.Get(); }
  const std::vector<std::string>& ReferenceData() const { return parts_.reference_data.Get(); }
  /// Whether anything is said about the simulated ECU; without it, nothing answers on port SIM.
  bool HasSimulation() const { return parts_.simulation.Get().has_value(); }
  const SimulationDescription& Simulation() const;

 private:
  Parts parts_;
};

}  // namespace korval::ecu
