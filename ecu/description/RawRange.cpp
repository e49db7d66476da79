// SPDX-License-Identifier: MIT
#include "ecu/description/RawRange.h"

#include <algorithm>
#include <cmath>

namespace korval::ecu {

RawRange RawRange::Of(const ItemDescription& item) {
  const auto bits = static_cast<int>(item.bits);
  if (item.coding == Coding::kSigned) return {-std::ldexp(1.0, bits - 1), std::ldexp(1.0, bits - 1) - 1};
  if (item.coding == Coding::kBcd) {
    const double first_digit = std::min(9.0, std::ldexp(1.0, bits % 4) - 1);  // the one that is cut
    return {0, (first_digit + 1) * std::pow(10.0, bits / 4) - 1};
  }
  return {0, std::ldexp(1.0, bits) - 1};
}

}  // namespace korval::ecu
