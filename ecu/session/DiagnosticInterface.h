// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ecu/can/CanFrame.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/description/MessagingFile.h"
#include "ecu/link/MessageLink.h"
#include "ecu/session/CanFrames.h"

namespace korval::ecu {

/// An opened diagnostic interface: a serial line, a CAN bus, or the simulation.
class DiagnosticInterface {
 public:
  virtual ~DiagnosticInterface() = default;
  /// Names the ECU that answers a function: those of one ECU share its channel. "": each has its own.
  virtual std::string EcuOf(const FunctionDescription& /*function*/) const { return {}; }
  virtual std::unique_ptr<MessageLink> LinkTo(std::shared_ptr<const EcuDescription> ecu) = 0;
  /// Sends CAN frames in their order. May run events until an adapter has taken the last one; the interface
  /// may be destroyed inside.
  virtual void SendFrames(const std::vector<FrameToSend>& frames) = 0;
  /// Tells who uses which CAN identifiers. An interface without a CAN bus has no use for it.
  virtual void UseMessaging(const std::shared_ptr<const MessagingFile>& /*messaging*/) {}
  /// Every CAN frame goes there, whoever it is for. An interface without a CAN bus hears none.
  virtual void HearFrames(const std::function<void(const CanFrame&)>& /*on_frame*/) {}
  /// The links were closed, the interface is about to be. Runs events, for a second at most, until what ends
  /// the communications has gone out.
  virtual void Leave() {}
};

}  // namespace korval::ecu
