// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "protocol/SerialPort.h"

namespace korval::platform {

/// Watches a serial driver's error counters, which may wrap around, and its modem lines.
class LineErrors {
 public:
  struct Counters {
    std::int32_t breaks = 0;
    std::int32_t framing = 0;
    std::int32_t overrun = 0;
    std::int32_t parity = 0;
    std::int32_t buffer_overrun = 0;
    bool carrier = false;
    bool cts = false;
    bool dsr = false;
  };

  /// Starts from what the driver counts now, for example at opening.
  void Start(const Counters& counters) { last_ = counters; }
  /// One event for each kind of error that was counted, and each modem line that was lost, since the last
  /// call. With RTS/CTS handshaking CTS is no such line: by it the peer asks for a pause.
  std::vector<protocol::CommEvent> Since(const Counters& counters, bool rts_cts_handshaking = false);
  /// What the driver of the open device `descriptor` knows; false when it has neither counters nor lines.
  static bool Query(int descriptor, Counters& counters);

 private:
  Counters last_;
};

}  // namespace korval::platform
