// SPDX-License-Identifier: MIT
// From a message's bits to a typed value and back. Decoding is total: what a message does not hold, or what
// its bits do not mean, gives an empty value. Encoding refuses with Failure 2012.
#pragma once

#include <optional>
#include <string>

#include "base/ByteBuffer.h"
#include "base/Variant.h"
#include "ecu/description/ItemDescription.h"

namespace korval::ecu {

/// Double when the item is scaled; else Int32 where the number fits and a single has it exactly, Double where
/// not; float of 32 bits Single, of 64 Double; boolean Boolean; ascii String without trailing NUL and blanks;
/// bytes String of upper-case hexadecimal digits; bcd as unsigned, empty when a digit is none.
base::Variant DecodeItem(const ItemDescription& item, base::ByteView message);

/// The bits as a number; none when the message does not hold them, or for float, ascii and bytes.
std::optional<std::int64_t> DecodeRaw(const ItemDescription& item, base::ByteView message);

/// The text that names the raw value, else the value as text; "" without a value.
std::string DecodeText(const ItemDescription& item, base::ByteView message);

/// Puts a value into the message, which is long enough, rounded to the nearest step. Raises Failure 2012 when
/// the value is of the wrong type or, before it is rounded, out of range; the message is then unchanged.
void EncodeItem(const ItemDescription& item, const base::Variant& value, base::ByteBuffer& message);

/// As EncodeItem, from a text: one that names a raw value, else the value as text.
void EncodeText(const ItemDescription& item, const std::string& text, base::ByteBuffer& message);

/// As EncodeItem for a number; what the item cannot hold becomes the nearest it can.
void EncodeClamped(const ItemDescription& item, double value, base::ByteBuffer& message);

/// Whether two values of the item that differ by a step can be the same in single precision.
bool LosesDigitsAsSingle(const ItemDescription& item);

}  // namespace korval::ecu
