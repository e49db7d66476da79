// SPDX-License-Identifier: MIT
#include "ecu/kline/WakeUp.h"

#include <algorithm>

namespace korval::ecu {
namespace {

constexpr Milliseconds kBitTime{200};
constexpr unsigned kAddressBits = 8;
// The standard has 1 ms for a pattern of 50 ms; ECUs bear more, and no computer is always on time.
constexpr Milliseconds kFastTolerance{5};
// An ECU looks at the middle of a bit.
constexpr Milliseconds kFiveBaudTolerance = kBitTime / 4;
// Of a byte 00, the start bit included. Its stop bit is high.
constexpr std::int32_t kLowBits = 9;

std::int32_t SpeedOf(std::int32_t bits, Milliseconds time) {
  static constexpr std::int64_t kPerSecond = 1000;
  return static_cast<std::int32_t>((bits * kPerSecond + time.count() / 2) / time.count());
}

}  // namespace

WakeUp WakeUp::Fast(const Timing& timing) {
  const Milliseconds low = timing.Value(&Timing::t_ini_l);
  return WakeUp({{true, low}, {false, std::max(timing.Value(&Timing::t_wup) - low, Milliseconds(0))}},
                kFastTolerance, SpeedOf(kLowBits, low));
}

WakeUp WakeUp::FiveBaud(const Timing& timing, std::uint8_t address) {
  std::vector<Level> levels{{false, timing.Value(&Timing::w0)}, {true, kBitTime}};
  for (unsigned bit = 0; bit < kAddressBits; ++bit) {
    levels.push_back({((static_cast<unsigned>(address) >> bit) & 1U) == 0, kBitTime});
  }
  levels.push_back({false, kBitTime});
  return WakeUp(std::move(levels), kFiveBaudTolerance, SpeedOf(kLowBits + 1, kBitTime));
}

std::optional<bool> WakeUp::TakeLevel(base::TimePoint now) {
  if (next_ == levels_.size() || (next_ != 0 && now < due_)) return std::nullopt;
  if (next_ == 0) due_ = now;
  const Level& level = levels_[next_++];
  due_ += level.duration;
  return level.low;
}

std::optional<base::TimePoint> WakeUp::Due() const { return next_ == 0 ? std::nullopt : std::optional(due_); }

}  // namespace korval::ecu
