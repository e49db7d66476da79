// SPDX-License-Identifier: MIT
#include "ecu/simulation/SimulatedValues.h"

#include <utility>

#include "base/Failure.h"
#include "ecu/description/ItemCoding.h"

namespace korval::ecu {
namespace {

bool IsText(const ItemDescription& item) {
  return item.coding == Coding::kAscii || item.coding == Coding::kBytes;
}

// A file may give an item a value that it cannot hold; the item then keeps its zero bits.
void PutText(const ItemDescription& item, const std::string& text, base::ByteBuffer& message) {
  try {
    EncodeText(item, text, message);
  } catch (const base::Failure&) {
    return;
  }
}

void PutValue(const ItemDescription& item, const base::Variant& value, base::ByteBuffer& message) {
  const auto number = value.ToDouble();
  if (number && !IsText(item)) return EncodeClamped(item, *number, message);
  PutText(item, value.ToText(), message);
}

}  // namespace

SimulatedValues::SimulatedValues(const SimulationDescription& simulation) {
  for (const SignalDescription& signal : simulation.signals) signals_.emplace(signal.item, &signal);
}

void SimulatedValues::Hold(const std::vector<ItemDescription>& items, base::ByteView request) {
  if (items.empty()) return;
  for (const ItemDescription& item : items) {
    base::Variant value = DecodeItem(item, request);
    if (!value.IsEmpty()) held_[item.name] = std::move(value);
  }
  ++hold_count_;
}

const SignalDescription* SimulatedValues::MovingSignal(const std::string& item) const {
  const auto found = signals_.find(item);
  if (found == signals_.end() || held_.contains(item)) return nullptr;
  return found->second->wave == SignalDescription::Wave::kConstant ? nullptr : found->second;
}

void SimulatedValues::Put(const ItemDescription& item, base::ByteBuffer& message) const {
  if (const auto held = held_.find(item.name); held != held_.end()) {
    PutValue(item, held->second, message);
  } else if (const auto signal = signals_.find(item.name); signal != signals_.end()) {
    PutValue(item, signal->second->value, message);
  } else if (!IsText(item)) {
    EncodeClamped(item, 0, message);
  }
}

}  // namespace korval::ecu
