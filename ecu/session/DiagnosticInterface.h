// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>

#include "base/ByteBuffer.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/kwp2000/MessageLink.h"

namespace korval::ecu {

/// An opened diagnostic interface: a serial line, a CAN bus, or the simulation.
class DiagnosticInterface {
 public:
  virtual ~DiagnosticInterface() = default;
  virtual std::unique_ptr<MessageLink> LinkTo(std::shared_ptr<const EcuDescription> ecu) = 0;
  /// Sends a CAN frame of 0 to 8 bytes.
  virtual void SendFrame(std::int32_t identifier, base::ByteView data) = 0;
};

}  // namespace korval::ecu
