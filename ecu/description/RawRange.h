// SPDX-License-Identifier: MIT
#pragma once

#include "ecu/description/ItemDescription.h"

namespace korval::ecu {

/// What the bits of an integer coding hold, as raw numbers. 2^63 and 2^64 stand for the numbers just below
/// them.
struct RawRange {
  static RawRange Of(const ItemDescription& item);

  double lowest = 0;
  double highest = 0;
};

}  // namespace korval::ecu
