// SPDX-License-Identifier: MIT
#pragma once

#include "base/ByteBuffer.h"
#include "ecu/description/KLineDescription.h"

namespace korval::ecu {

/// Takes what the adapter returns of the bytes sent out of the bytes received. Whether it returns them is
/// said, or found out at the first bytes: on a line where only one speaks at a time, an answer never begins
/// with the request.
class EchoFilter {
 public:
  using Echo = KLineDescription::Echo;

  explicit EchoFilter(Echo echo) : echo_(echo) {}

  /// The line was pulled low, of which a receiver makes bytes 00: they may come in front of the echo.
  void LineWasLow() { behind_low_ = true; }
  /// These bytes are being sent.
  void Expect(base::ByteView sent);
  /// Appends to `rest` what is no echo. False: something else came in place of the echo.
  bool Filter(base::ByteView received, base::ByteBuffer& rest);
  /// A part of the echo has come.
  bool HasBegun() const { return matched_ > 0; }
  /// An echo that there has to be is not complete.
  bool IsMissing() const { return echo_ == Echo::kOn && matched_ < sent_.Length(); }
  /// Whether there is one; automatic: not known yet.
  Echo State() const { return echo_; }

 private:
  Echo echo_;
  base::ByteBuffer sent_;
  std::size_t matched_ = 0;
  bool behind_low_ = false;
};

}  // namespace korval::ecu
