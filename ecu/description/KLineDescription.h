// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

namespace korval::ecu {

/// What is said about a function's K-line, its times apart.
struct KLineDescription {
  /// How the communication is started (ISO 14230-2): fast, by 5 baud, or not at all.
  enum class Init { kFast, kSlow, kNone };
  /// Whether the adapter returns what is sent.
  enum class Echo { kAutomatic, kOn, kOff };
  /// How the line is held low for an initialisation: by the serial chip's break, or by a byte 00 at a low
  /// speed.
  enum class WakeUp { kAutomatic, kBreak, kByte };
  /// The header of requests: as the ECU's key bytes say, or one of the four.
  enum class Header { kAutomatic, kFormat, kFormatLength, kAddresses, kAddressesLength };
  /// What of the adapter drives the L line: nothing, or RTS, which pulls it low when it is on, or when it is
  /// off.
  enum class LLine { kNone, kRts, kRtsInverted };

  Init init = Init::kFast;
  std::uint8_t init_address = 0x10;  ///< of the 5-baud initialisation
  std::int32_t baud = 10400;
  Echo echo = Echo::kAutomatic;
  std::optional<bool> rts;  ///< while the link is open; none: as it is
  std::optional<bool> dtr;
  LLine l_line = LLine::kNone;
  WakeUp wake_up = WakeUp::kAutomatic;
  Header header = Header::kAutomatic;
  bool functional = false;  ///< the initialisation is for any ECU
  /// Goes behind the session in startDiagnosticSession: the speed that the session has.
  std::optional<std::uint8_t> session_baud;
};

}  // namespace korval::ecu
