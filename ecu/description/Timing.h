// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "ecu/description/Milliseconds.h"

namespace korval::ecu {

/// The times of the diagnostic services and of the K-line (ISO 14230-2), all in milliseconds. What is not
/// said is left open.
struct Timing {
  using Number = std::optional<std::int32_t>;

  /// The time, or its default.
  Milliseconds Value(Number Timing::*number) const;

  Number p1;
  Number p2_min;
  Number p2;
  Number p2_star;
  Number pending_cap;
  Number busy_repeat;
  Number busy_cap;
  Number p3;
  Number p3_max;
  Number p4;
  Number t_idle;
  Number t_ini_l;
  Number t_wup;
  Number w0;
  Number w1;
  Number w2;
  Number w3;
  Number w4;
  Number w4_max;
};

/// A time as the ECU file gives it, a whole number of milliseconds.
struct TimingParameter {
  const char* attribute;
  const char* symbol;
  std::int32_t fallback;
  std::int32_t lowest;
  std::int32_t highest;
  Timing::Number Timing::*value;
};

/// The table that reading, defaults and docs/ecu-file.md stand on. How long an ECU may take is what a tester
/// bears, and not the limit that the standard has for the ECU: P1 of 20 ms and P2 of 50 ms would leave
/// nothing for an adapter on USB, which brings bytes up to 16 ms late and now and then misses a turn.
inline constexpr std::array<TimingParameter, 19> kTimingParameters{{
    {"P1Ms", "P1max", 50, 1, 1000, &Timing::p1},
    {"P2MinMs", "P2min", 25, 0, 60000, &Timing::p2_min},
    {"P2Ms", "P2max", 150, 1, 60000, &Timing::p2},
    {"P2StarMs", "P2*max", 5000, 1, 600000, &Timing::p2_star},
    {"PendingCapMs", "", 60000, 1, 3600000, &Timing::pending_cap},
    {"BusyRepeatMs", "", 100, 1, 60000, &Timing::busy_repeat},
    {"BusyCapMs", "", 2000, 0, 3600000, &Timing::busy_cap},
    {"P3Ms", "P3min", 55, 0, 60000, &Timing::p3},
    {"P3MaxMs", "P3max", 5000, 1, 3600000, &Timing::p3_max},
    {"P4Ms", "P4min", 5, 0, 1000, &Timing::p4},
    {"TIdleMs", "TIdle, W5", 300, 0, 60000, &Timing::t_idle},
    {"TIniLMs", "TiniL", 25, 1, 1000, &Timing::t_ini_l},
    {"TWupMs", "TWup", 50, 2, 2000, &Timing::t_wup},
    {"W0Ms", "W0", 2, 0, 60000, &Timing::w0},
    {"W1Ms", "W1", 300, 1, 60000, &Timing::w1},
    {"W2Ms", "W2", 20, 1, 60000, &Timing::w2},
    {"W3Ms", "W3", 20, 1, 60000, &Timing::w3},
    {"W4Ms", "W4min", 25, 0, 60000, &Timing::w4},
    {"W4MaxMs", "W4max", 50, 1, 60000, &Timing::w4_max},
}};

}  // namespace korval::ecu
