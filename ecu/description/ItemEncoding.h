// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "base/ByteBuffer.h"
#include "base/Variant.h"
#include "ecu/description/ItemDescription.h"

namespace korval::ecu {

/// Puts a value into the message, which is long enough, rounded to the nearest step. Raises Failure 2012 when
/// the value is of the wrong type or, before it is rounded, out of range; the message is then unchanged.
void EncodeItem(const ItemDescription& item, const base::Variant& value, base::ByteBuffer& message);

/// As EncodeItem, from a text: one that names a raw value, else the value as text.
void EncodeText(const ItemDescription& item, const std::string& text, base::ByteBuffer& message);

/// As EncodeItem for a number; what the item cannot hold becomes the nearest it can.
void EncodeClamped(const ItemDescription& item, double value, base::ByteBuffer& message);

}  // namespace korval::ecu
