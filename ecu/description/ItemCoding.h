// SPDX-License-Identifier: MIT
// From a message's bits to a typed value; ItemEncoding is the way back. Decoding is total: what a message
// does not hold, or what its bits do not mean, gives an empty value.
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

/// The text of an ascii item's bytes, without trailing NUL and blanks.
std::string AsciiText(base::ByteView bytes);

/// Whether two values of the item that differ by a step can be the same in single precision.
bool LosesDigitsAsSingle(const ItemDescription& item);

}  // namespace korval::ecu
