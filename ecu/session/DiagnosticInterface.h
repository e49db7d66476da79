// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Task.h"
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
  /// Sends CAN frames in their order, and ends when the adapter has taken the last one. The interface may be
  /// destroyed meanwhile.
  virtual base::Task<void> SendFrames(std::vector<FrameToSend> frames) = 0;
  /// Tells who uses which CAN identifiers. An interface without a CAN bus has no use for it.
  virtual void UseMessaging(const std::shared_ptr<const MessagingFile>& /*messaging*/) {}
  /// Every CAN frame goes there, whoever it is for. An interface without a CAN bus hears none.
  virtual void HearFrames(const std::function<void(const CanFrame&)>& /*on_frame*/) {}
};

}  // namespace korval::ecu
