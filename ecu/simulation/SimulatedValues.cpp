// SPDX-License-Identifier: MIT
#include "ecu/simulation/SimulatedValues.h"

#include <cmath>
#include <utility>

#include "base/Failure.h"
#include "ecu/description/ItemCoding.h"
#include "ecu/description/ItemEncoding.h"

namespace korval::ecu {
namespace {

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
  if (number && std::isfinite(*number) && !item.IsText()) return EncodeClamped(item, *number, message);
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
    // As a number a true boolean is -1, which items of other codings cannot hold.
    if (const bool* flag = value.As<bool>()) value = std::int32_t{*flag ? 1 : 0};
    if (!value.IsEmpty()) held_[item.name] = std::move(value);
  }
  ++hold_count_;
}

const SignalDescription* SimulatedValues::MovingSignal(const ItemDescription& item) const {
  if (item.IsText()) return nullptr;
  const auto found = signals_.find(item.name);
  if (found == signals_.end() || held_.contains(item.name)) return nullptr;
  return found->second->wave == SignalDescription::Wave::kConstant ? nullptr : found->second;
}

void SimulatedValues::Put(const ItemDescription& item, base::ByteBuffer& message) const {
  if (const auto held = held_.find(item.name); held != held_.end()) {
    PutValue(item, held->second, message);
  } else if (const auto signal = signals_.find(item.name); signal != signals_.end()) {
    PutValue(item, signal->second->value, message);
  } else if (!item.IsText()) {
    EncodeClamped(item, 0, message);
  }
}

}  // namespace korval::ecu
