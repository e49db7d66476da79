// SPDX-License-Identifier: MIT
#include "ecu/description/RequestDescription.h"

#include <algorithm>

namespace korval::ecu {
namespace {

// Bytes that are left out are zero. More of them than a K-line message has would let a small file ask for any
// amount of memory.
constexpr std::size_t kLongestCompleted = 255;

}  // namespace

void RequestDescription::CompleteSent() {
  const std::size_t longest = std::max(sent.Length(), kLongestCompleted);
  std::erase_if(sent_items, [&](const ItemDescription& item) { return item.BytesNeeded() > longest; });
  for (const ItemDescription& item : sent_items) {
    sent.SetLength(std::max(sent.Length(), item.BytesNeeded()));
  }
}

}  // namespace korval::ecu
