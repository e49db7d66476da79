// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "base/EventLoop.h"
#include "ecu/description/Timing.h"

namespace korval::ecu {

/// The levels of the line that wake an ECU up (ISO 14230-2).
class WakeUp {
 public:
  /// How the line is held low: by a break, by a byte 00 at a low speed, or not at all.
  enum class Means { kBreak, kByte, kNone };

  /// Low for TiniL, then high until TWup is over.
  static WakeUp Fast(const Timing& timing);
  /// High for W0, then the address at 5 bit/s: start bit, eight bits from the least significant, stop bit.
  static WakeUp FiveBaud(const Timing& timing, std::uint8_t address);

  /// Begins with the first level that is taken. True: pull the line low; none: nothing is due.
  std::optional<bool> TakeLevel(base::TimePoint now);
  /// When the next level is due, or after the last one the end; none before the first.
  std::optional<base::TimePoint> Due() const;
  /// The next level, or the end, comes later than ECUs bear.
  bool IsLate(base::TimePoint now) const { return next_ != 0 && now > due_ + tolerance_; }
  /// The speed at which a byte 00 is as long as a low level, or, where two may follow each other, as long as
  /// fits.
  std::int32_t SlowBaud() const { return slow_baud_; }
  bool IsDone(base::TimePoint now) const { return next_ == levels_.size() && now >= *Due(); }

 private:
  struct Level {
    bool low;
    base::Duration duration;
  };

  WakeUp(std::vector<Level> levels, base::Duration tolerance, std::int32_t slow_baud)
      : levels_(std::move(levels)), tolerance_(tolerance), slow_baud_(slow_baud) {}

  std::vector<Level> levels_;
  base::Duration tolerance_;
  std::int32_t slow_baud_;
  std::size_t next_ = 0;
  base::TimePoint due_{};
};

}  // namespace korval::ecu
