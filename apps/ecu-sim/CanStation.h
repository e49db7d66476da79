// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <vector>

#include "base/EventLoop.h"
#include "ecu/can/SharedCanBus.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/description/MessagingFile.h"
#include "ecu/simulation/IsoTpEcu.h"

namespace korval::apps {

/// The simulated ECU on a CAN bus: it answers requests, and sends the cyclic frames of the messaging file
/// with what its signals stand at. A bus that was lost is opened anew until it is back.
class CanStation {
 public:
  /// Raises Failure when neither file gives the ECU's identifiers, and what `open` raises. `messaging` may
  /// hold nothing.
  CanStation(std::shared_ptr<base::EventLoop> loop, std::shared_ptr<const ecu::EcuDescription> description,
             ecu::MessagingFile messaging, ecu::SharedCanBus::Open open);
  CanStation(const CanStation&) = delete;
  CanStation& operator=(const CanStation&) = delete;

 private:
  std::shared_ptr<const ecu::SharedCanBus::Listener> MakeListener();
  void StartCycle(const ecu::MessagingFile::Frame& frame);
  void SendCyclic(const ecu::MessagingFile::Frame& frame);

  std::shared_ptr<base::EventLoop> loop_;
  std::shared_ptr<const ecu::EcuDescription> description_;
  ecu::MessagingFile messaging_;
  ecu::SharedCanBus bus_;
  std::shared_ptr<ecu::SimulatedEcu> values_;
  ecu::IsoTpEcu ecu_;
  std::shared_ptr<const ecu::SharedCanBus::Listener> listener_;
  std::vector<std::unique_ptr<base::Timer>> cycles_;
};

}  // namespace korval::apps
