// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ecu/description/KLineDescription.h"
#include "ecu/description/Milliseconds.h"
#include "ecu/description/Timing.h"
#include "ecu/description/TransportDescription.h"

namespace korval::ecu {

/// How one ECU function is talked to.
struct FunctionDescription {
  enum class Init { kFast, kSlow, kNone };

  std::string name;
  std::string ecu;                   ///< the name shown to people
  std::string protocol = "KWP2000";  ///< KWP2000, DiagOnCAN, CAN, or another that is only shown
  std::uint8_t address = 0x10;
  std::uint8_t tester = 0xF1;
  Init init = Init::kFast;
  std::uint8_t init_address = 0x10;  ///< of the 5-baud initialisation
  KLineDescription kline;
  std::int32_t baud = 10400;
  TransportDescription transport;
  std::optional<std::uint8_t> session;  ///< diagnostic mode opened after the start
  Milliseconds keep_alive{2000};        ///< tester present after this much silence, 0: never
  std::optional<std::int32_t> repeats;  ///< of a reading request; none: as the link has it
  Timing timing;
};

}  // namespace korval::ecu
