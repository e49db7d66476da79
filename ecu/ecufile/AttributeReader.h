// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include <pugixml.hpp>

#include "base/ByteBuffer.h"
#include "ecu/can/CanFrame.h"
#include "ecu/description/Milliseconds.h"

namespace korval::ecu {

/// Decimal integer attribute; `fallback` when it is absent, no number, or outside `lowest` to `highest`.
std::int32_t IntegerAttribute(const pugi::xml_node& node, const char* name, std::int32_t fallback,
                              std::int32_t lowest, std::int32_t highest);
/// The same; none when it is absent or cannot be used.
std::optional<std::int32_t> OptionalIntegerAttribute(const pugi::xml_node& node, const char* name,
                                                     std::int32_t lowest, std::int32_t highest);
/// Whether the attribute is 1.
bool FlagAttribute(const pugi::xml_node& node, const char* name);
Milliseconds MillisecondsAttribute(const pugi::xml_node& node, const char* name, Milliseconds fallback,
                                   std::int32_t lowest, std::int32_t highest);
/// Decimal number attribute; none when it is absent or no number.
std::optional<double> NumberAttribute(const pugi::xml_node& node, const char* name);
/// Hexadecimal number attribute of at most eight digits; none when it is absent or no such number.
std::optional<std::uint32_t> HexAttribute(const pugi::xml_node& node, const char* name);
/// The same of at most two significant digits; `fallback` when it is absent or cannot be used.
std::uint8_t ByteAttribute(const pugi::xml_node& node, const char* name, std::uint8_t fallback);
/// A CAN identifier in hexadecimal, 8 digits mean 29 bit; none when it is absent or cannot exist.
std::optional<CanIdentifier> CanIdentifierAttribute(const pugi::xml_node& node, const char* name);
/// Bytes in hexadecimal, blanks allowed between them; none when the attribute holds anything else.
std::optional<base::ByteBuffer> BytesAttribute(const pugi::xml_node& node, const char* name);

}  // namespace korval::ecu
