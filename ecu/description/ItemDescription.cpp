// SPDX-License-Identifier: MIT
#include "ecu/description/ItemDescription.h"

#include <cmath>

namespace korval::ecu {

// The fraction of whole numbers with the smallest power of ten that gives exactly this step.
void ItemDescription::SetStep(double step) {
  static constexpr double kWholeNumbersEnd = 9007199254740992;  // 2^53
  static constexpr int kMostDecimals = 15;
  numerator = step;
  denominator = 1;
  double power = 1;
  for (int decimals = 0; decimals <= kMostDecimals; ++decimals) {
    const double whole = std::round(step * power);
    if (std::abs(whole) < kWholeNumbersEnd && whole / power == step) {
      numerator = whole;
      denominator = power;
      return;
    }
    power *= 10;
  }
}

}  // namespace korval::ecu
