// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "ecu/can/CanFrame.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/description/TransportDescription.h"

namespace korval::ecu {

/// How one tester and one ECU talk, as one of them sees it (ISO 15765-2). The defaults are the standard's.
struct IsoTpParameters {
  using Microseconds = std::chrono::microseconds;

  /// The tester's side of an ECU function. None when an identifier is missing. Raises 1002 for an addressing
  /// that is not understood.
  static std::optional<IsoTpParameters> OfTester(const FunctionDescription& function,
                                                 const TransportDescription& transport);
  /// The same as the other one sees it.
  IsoTpParameters OfOtherSide() const;

  CanIdentifier transmit;
  CanIdentifier receive;
  /// Extended addressing: the target address in front of what is sent, and of what is received.
  std::optional<std::uint8_t> transmit_target;
  std::optional<std::uint8_t> receive_target;
  /// Fills frames up to 8 bytes; none: they are as short as they can be.
  std::optional<std::uint8_t> padding = 0x55;

  Microseconds n_as{1000000};  ///< longest time until a frame of a message is on the bus
  Microseconds n_ar{1000000};  ///< longest time until a flow control is on the bus
  Microseconds n_bs{1000000};  ///< longest wait for a flow control
  Microseconds n_br{0};        ///< time from a frame until the flow control that answers it
  Microseconds n_cr{1000000};  ///< longest wait for a consecutive frame
  /// Gap between the own consecutive frames (N_Cs) in place of the STmin that the receiver asks for.
  std::optional<Microseconds> separation;
  std::int32_t most_waits = 10;  ///< N_WFTmax: wait frames taken in a row
  std::uint8_t block_size = 0;   ///< BS asked of the sender, 0: all frames in one block
  Microseconds st_min{0};        ///< STmin asked of the sender
  std::size_t longest_message = 4095;

  /// Bytes of a frame behind the target address.
  std::size_t TransmitCapacity() const { return CanFrame::kMostBytes - (transmit_target ? 1 : 0); }
  std::size_t ReceiveCapacity() const { return CanFrame::kMostBytes - (receive_target ? 1 : 0); }
};

}  // namespace korval::ecu
