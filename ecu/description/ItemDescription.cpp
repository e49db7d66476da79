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

bool ItemDescription::IsPossible() const {
  const bool has_whole_bytes = first_bit % 8 == 0 && bits % 8 == 0;
  if (bits == 0 || BytesNeeded() > kLongestMessage) return false;
  if (IsText()) return has_whole_bytes && !little_endian;
  if (bits > 64 || (little_endian && !has_whole_bytes)) return false;
  return coding != Coding::kFloat || bits == 32 || bits == 64;
}

}  // namespace korval::ecu
