// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>

#include "base/Time.h"

namespace korval::ecu {

/// What a link offers to the services above it. It may change with a start of the communication and with
/// what the tester and the ECU agree on.
struct LinkOffer {
  /// Of a message, in bytes. The ECU may take less.
  std::size_t longest_message = 4095;
  /// P2 and P2*, where the link and the ECU have others than the ECU file says.
  std::optional<base::Duration> answer = {};
  std::optional<base::Duration> pending = {};
  /// What the link adds to the time in which the ECU answers.
  base::Duration latency{};
  /// The communication has ended by itself when there was no exchange for longer than this (P3max).
  base::Duration longest_silence = base::Duration::max();
  /// How often a reading request whose answer is damaged or missing is sent again, unless the ECU file says.
  int usual_repeats = 0;
  /// One request can go to several ECUs.
  bool functional_requests = false;
  /// The ECU may send what nobody asked for.
  bool unasked_answers = false;
};

}  // namespace korval::ecu
