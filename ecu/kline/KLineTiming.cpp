// SPDX-License-Identifier: MIT
#include "ecu/kline/KLineTiming.h"

#include <algorithm>

namespace korval::ecu {
namespace {

using std::chrono::microseconds;

constexpr std::size_t kAgreedBytes = 5;
constexpr microseconds kHalfMillisecond{500};
constexpr Milliseconds kP2Step{25};
constexpr Milliseconds kP3Step{250};
constexpr unsigned kLongSteps = 0xF0;
constexpr unsigned kNoLimit = 0xFF;
constexpr int kStepsInALongOne = 256;
// The extended set.
constexpr Milliseconds kExtendedP2Max{1000};
constexpr Milliseconds kExtendedP3Min{0};

base::Duration P2Max(unsigned byte, base::Duration no_limit) {
  if (byte == kNoLimit) return no_limit;
  if (byte > kLongSteps) return (byte - kLongSteps) * kStepsInALongOne * kP2Step;
  return std::max(byte, 1U) * kP2Step;
}

base::Duration P3Max(unsigned byte) {
  return byte == kNoLimit ? base::Duration::max() : std::max(byte, 1U) * kP3Step;
}

}  // namespace

KLineTiming KLineTiming::Of(const Timing& timing, const KeyBytes& key_bytes) {
  KLineTiming times{timing.Value(&Timing::p1),          timing.Value(&Timing::p2_min),
                    timing.Value(&Timing::p2),          timing.Value(&Timing::p2_star),
                    timing.Value(&Timing::pending_cap), timing.Value(&Timing::p3),
                    timing.Value(&Timing::p3_max),      timing.Value(&Timing::p4)};
  if (!key_bytes.HasExtendedTimes()) return times;
  if (!timing.p2) times.p2_max = kExtendedP2Max;
  if (!timing.p3) times.p3_min = kExtendedP3Min;
  return times;
}

void KLineTiming::Change(base::ByteView agreed) {
  if (agreed.size() != kAgreedBytes) return;
  p2_min = agreed[0] * kHalfMillisecond;
  p2_max = P2Max(agreed[1], p2_star);
  p3_min = agreed[2] * kHalfMillisecond;
  p3_max = P3Max(agreed[3]);
  p4_min = agreed[4] * kHalfMillisecond;
}

}  // namespace korval::ecu
