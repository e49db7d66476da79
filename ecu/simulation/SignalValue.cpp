// SPDX-License-Identifier: MIT
#include "ecu/simulation/SignalValue.h"

#include <cmath>
#include <cstdint>
#include <numbers>

namespace korval::ecu {
namespace {

constexpr std::uint64_t kNoiseSeed = 0x4B6F7276616C2D31;

// The output step of the SplitMix64 generator: neighbouring counts give unrelated bits.
std::uint64_t Scrambled(std::uint64_t count) {
  std::uint64_t bits = kNoiseSeed + count * 0x9E3779B97F4A7C15;
  bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9;
  bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EB;
  return bits ^ (bits >> 31);
}

double NoiseFraction(std::uint64_t period_count) {
  return std::ldexp(static_cast<double>(Scrambled(period_count) >> 11), -53);
}

// Where between Min (0) and Max (1) the signal stands.
double Fraction(const SignalDescription& signal, base::Duration time) {
  const base::Duration period = signal.period;
  const double phase = static_cast<double>((time % period).count()) / static_cast<double>(period.count());
  switch (signal.wave) {
    case SignalDescription::Wave::kRamp:
      return phase;
    case SignalDescription::Wave::kSine:
      return 0.5 + 0.5 * std::sin(2 * std::numbers::pi * phase);
    case SignalDescription::Wave::kSquare:
      return phase < 0.5 ? 0 : 1;
    case SignalDescription::Wave::kNoise:
      return NoiseFraction(static_cast<std::uint64_t>(time / period));
    case SignalDescription::Wave::kConstant:
      break;
  }
  return 0;
}

}  // namespace

double SignalValue(const SignalDescription& signal, base::Duration time) {
  const double fraction = Fraction(signal, time);
  return signal.min * (1 - fraction) + signal.max * fraction;
}

}  // namespace korval::ecu
