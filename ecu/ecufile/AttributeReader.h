// SPDX-License-Identifier: MIT
// Reads attributes as the grammar has them. One that cannot be used counts as absent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include <pugixml.hpp>

#include "base/ByteBuffer.h"
#include "ecu/can/CanFrame.h"
#include "ecu/description/Milliseconds.h"
#include "ecu/ecufile/Attribute.h"

namespace korval::ecu {

inline const char* TextAttribute(const pugi::xml_node& node, const Attribute& rule) {
  return node.attribute(rule.name).value();
}

/// None when it is absent, no whole number, or out of range.
std::optional<std::int32_t> OptionalInteger(const pugi::xml_node& node, const Attribute& rule);
/// The same, and the default then.
std::int32_t IntegerAttribute(const pugi::xml_node& node, const Attribute& rule);
Milliseconds MillisecondsAttribute(const pugi::xml_node& node, const Attribute& rule);

/// None when it is absent or no whole number of 64 bits.
std::optional<std::int64_t> RawAttribute(const pugi::xml_node& node, const Attribute& rule);

/// None when it is absent or no number.
std::optional<double> NumberAttribute(const pugi::xml_node& node, const Attribute& rule);

/// None when it is absent, no hexadecimal number of at most eight digits, or out of range.
std::optional<std::uint32_t> HexAttribute(const pugi::xml_node& node, const Attribute& rule);
/// The same of a single byte, and `fallback` then.
std::uint8_t ByteAttribute(const pugi::xml_node& node, const Attribute& rule, std::uint8_t fallback);
/// With the default of the grammar.
std::uint8_t ByteAttribute(const pugi::xml_node& node, const Attribute& rule);

/// None when it is absent or cannot exist.
std::optional<CanIdentifier> CanIdentifierAttribute(const pugi::xml_node& node, const Attribute& rule);

/// None when it is absent or holds anything but bytes. How many there may be is the reader's affair.
std::optional<base::ByteBuffer> BytesAttribute(const pugi::xml_node& node, const Attribute& rule);
/// Whether there may be so many bytes.
bool HasLength(const Attribute& rule, std::size_t bytes);

/// Place of the choice; that of the default when it is absent or empty, none when it is another text.
std::optional<std::size_t> KnownChoice(const pugi::xml_node& node, const Attribute& rule);
/// Place of the choice, or of the default.
std::size_t ChoiceAttribute(const pugi::xml_node& node, const Attribute& rule);
/// For an enumeration in the order of the choices.
template <typename Enumeration>
Enumeration EnumAttribute(const pugi::xml_node& node, const Attribute& rule) {
  return static_cast<Enumeration>(ChoiceAttribute(node, rule));
}
/// Of the choices 0 and 1.
inline bool FlagAttribute(const pugi::xml_node& node, const Attribute& rule) {
  return ChoiceAttribute(node, rule) == 1;
}

}  // namespace korval::ecu
