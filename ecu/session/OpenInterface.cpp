// SPDX-License-Identifier: MIT
#include "ecu/session/OpenInterface.h"

#include "ecu/description/ErrorNumbers.h"
#include "ecu/session/SimulatedInterface.h"

namespace korval::ecu {
namespace {

bool IsSerial(const std::string& port) { return port.starts_with("COM") || port.starts_with("/dev/"); }

std::string WhyNot(const std::string& port) {
  if (port == "NONE") return "the USB interface cannot be driven yet; choose the port SIM, the simulated ECU";
  if (port.starts_with("CAN:"))
    return "CAN links cannot be driven yet; choose the port SIM, the simulated ECU";
  if (IsSerial(port)) return "K-line links cannot be driven yet; choose the port SIM, the simulated ECU";
  return "there is no such port; choose the port SIM, the simulated ECU";
}

}  // namespace

std::unique_ptr<DiagnosticInterface> OpenInterface(const std::string& port,
                                                   const SessionEnvironment& environment,
                                                   const ErrorTable& errors) {
  if (port.empty())
    throw errors.MakeFailure(kNoInterface, "choose a port, for example SIM, the simulated ECU");
  if (port == "SIM") return std::make_unique<SimulatedInterface>(environment.loop, environment.on_can_frame);
  throw errors.MakeFailure(kInterfaceRefused, port + ": " + WhyNot(port));
}

}  // namespace korval::ecu
