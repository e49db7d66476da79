// SPDX-License-Identifier: MIT
#include <chrono>
#include <cmath>
#include <set>

#include <gtest/gtest.h>

#include "ecu/simulation/SignalValue.h"

namespace korval::ecu {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using Wave = SignalDescription::Wave;

SignalDescription Signal(Wave wave) { return {"S", wave, "", -10, 30, Milliseconds(1000)}; }

double At(Wave wave, int milliseconds_on) { return SignalValue(Signal(wave), milliseconds(milliseconds_on)); }

TEST(SignalValueTest, RampRisesOnceAPeriod) {
  EXPECT_DOUBLE_EQ(At(Wave::kRamp, 0), -10);
  EXPECT_DOUBLE_EQ(At(Wave::kRamp, 250), 0);
  EXPECT_DOUBLE_EQ(At(Wave::kRamp, 750), 20);
  EXPECT_DOUBLE_EQ(At(Wave::kRamp, 1000), -10);
}

TEST(SignalValueTest, SineStartsMidwayAndRises) {
  EXPECT_DOUBLE_EQ(At(Wave::kSine, 0), 10);
  EXPECT_DOUBLE_EQ(At(Wave::kSine, 250), 30);
  EXPECT_NEAR(At(Wave::kSine, 500), 10, 1E-12);
  EXPECT_DOUBLE_EQ(At(Wave::kSine, 750), -10);
}

TEST(SignalValueTest, SquareIsLowAndThenHigh) {
  EXPECT_EQ(At(Wave::kSquare, 0), -10);
  EXPECT_EQ(At(Wave::kSquare, 499), -10);
  EXPECT_EQ(At(Wave::kSquare, 500), 30);
  EXPECT_EQ(At(Wave::kSquare, 1000), -10);
}

TEST(SignalValueTest, NoiseChangesEachPeriodWithinItsLimitsAndRepeatsInEveryRun) {
  std::set<double> values;
  for (int period = 0; period < 100; ++period) {
    const double value = At(Wave::kNoise, period * 1000);
    EXPECT_GE(value, -10);
    EXPECT_LE(value, 30);
    EXPECT_EQ(At(Wave::kNoise, period * 1000 + 999), value);
    values.insert(value);
  }
  EXPECT_EQ(values.size(), 100U);
  EXPECT_LT(*values.begin(), -5);
  EXPECT_GT(*values.rbegin(), 25);
  EXPECT_DOUBLE_EQ(At(Wave::kNoise, 0), 5.1224463268153198);
}

TEST(SignalValueTest, LimitsOfAnyMagnitudeGiveAFiniteValue) {
  for (const Wave wave : {Wave::kRamp, Wave::kSine, Wave::kSquare, Wave::kNoise}) {
    const SignalDescription signal{"S", wave, "", -1.7E308, 1.7E308, Milliseconds(1)};
    for (int hour = 0; hour < 24; ++hour) {
      EXPECT_TRUE(std::isfinite(SignalValue(signal, hours(hour * 1000) + std::chrono::microseconds(hour))));
    }
  }
}

}  // namespace
}  // namespace korval::ecu
