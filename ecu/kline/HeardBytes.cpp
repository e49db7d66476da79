// SPDX-License-Identifier: MIT
#include "ecu/kline/HeardBytes.h"

#include <algorithm>

namespace korval::ecu {
namespace {

constexpr std::size_t kMostShown = 32;

}  // namespace

void HeardBytes::Append(base::ByteView bytes) {
  const std::size_t room = kMostShown + 1 - std::min(bytes_.Length(), kMostShown + 1);
  bytes_.Append(bytes.first(std::min(bytes.size(), room)));
}

std::string HeardBytes::Text() const {
  if (bytes_.Empty()) return " (nothing was heard)";
  if (bytes_.Length() <= kMostShown) return " (heard: " + bytes_.ToHex() + ")";
  return " (heard: " + base::HexText(bytes_.View(0, kMostShown)) + "...)";
}

}  // namespace korval::ecu
