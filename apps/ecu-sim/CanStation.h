// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <vector>

#include "base/EventLoop.h"
#include "ecu/can/CanBus.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/description/MessagingFile.h"
#include "ecu/simulation/IsoTpEcu.h"

namespace korval::apps {

/// The simulated ECU on a CAN bus: it answers requests, and sends the cyclic frames of the messaging file
/// with what its signals stand at.
class CanStation {
 public:
  /// Raises Failure when neither file gives the ECU's identifiers. `messaging` may hold nothing.
  CanStation(std::shared_ptr<base::EventLoop> loop, std::shared_ptr<const ecu::EcuDescription> description,
             ecu::MessagingFile messaging, std::unique_ptr<ecu::CanBus> bus);
  CanStation(const CanStation&) = delete;
  CanStation& operator=(const CanStation&) = delete;

 private:
  void StartCycle(const ecu::MessagingFile::Frame& frame);
  void SendCyclic(const ecu::MessagingFile::Frame& frame);

  std::shared_ptr<base::EventLoop> loop_;
  std::shared_ptr<const ecu::EcuDescription> description_;
  ecu::MessagingFile messaging_;
  std::unique_ptr<ecu::CanBus> bus_;
  std::shared_ptr<ecu::SimulatedEcu> values_;
  ecu::IsoTpEcu ecu_;
  std::vector<std::unique_ptr<base::Timer>> cycles_;
};

}  // namespace korval::apps
