// SPDX-License-Identifier: MIT
#pragma once

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/description/Timing.h"
#include "ecu/kline/KeyBytes.h"

namespace korval::ecu {

/// The times in use on a K-line: those of the ECU file; where it says nothing, those of the set that the key
/// bytes announce (ISO 14230-2); later what the tester and the ECU agree on.
struct KLineTiming {
  static KLineTiming Of(const Timing& timing, const KeyBytes& key_bytes);

  /// Takes over the five bytes of accessTimingParameters (83 03): P2min in 0.5 ms, P2max in 25 ms (above F0:
  /// the low digit in 6.4 s, FF: no limit), P3min in 0.5 ms, P3max in 250 ms (FF: no limit), P4min in 0.5 ms.
  /// Anything but five bytes changes nothing.
  void Change(base::ByteView agreed);

  base::Duration p1_max;
  base::Duration p2_min;
  base::Duration p2_max;
  base::Duration p2_star;
  base::Duration pending_cap;
  base::Duration p3_min;
  base::Duration p3_max;
  base::Duration p4_min;
};

}  // namespace korval::ecu
