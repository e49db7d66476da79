// SPDX-License-Identifier: MIT
#include "ecu/ecufile/AttributeReader.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "base/Failure.h"
#include "base/NumberText.h"

namespace korval::ecu {

std::int32_t IntegerAttribute(const pugi::xml_node& node, const char* name, std::int32_t fallback,
                              std::int32_t lowest, std::int32_t highest) {
  return OptionalIntegerAttribute(node, name, lowest, highest).value_or(fallback);
}

std::optional<std::int32_t> OptionalIntegerAttribute(const pugi::xml_node& node, const char* name,
                                                     std::int32_t lowest, std::int32_t highest) {
  const auto value = base::ReadInteger(node.attribute(name).value());
  if (!value || *value < lowest || *value > highest) return std::nullopt;
  return value;
}

bool FlagAttribute(const pugi::xml_node& node, const char* name) {
  return std::string_view(node.attribute(name).value()) == "1";
}

Milliseconds MillisecondsAttribute(const pugi::xml_node& node, const char* name, Milliseconds fallback,
                                   std::int32_t lowest, std::int32_t highest) {
  return Milliseconds(
      IntegerAttribute(node, name, static_cast<std::int32_t>(fallback.count()), lowest, highest));
}

std::optional<double> NumberAttribute(const pugi::xml_node& node, const char* name) {
  return base::ReadNumber(node.attribute(name).value());
}

std::optional<std::uint32_t> HexAttribute(const pugi::xml_node& node, const char* name) {
  const std::string_view digits = node.attribute(name).value();
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (digits.empty() || error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
  return value;
}

std::uint8_t ByteAttribute(const pugi::xml_node& node, const char* name, std::uint8_t fallback) {
  const auto value = HexAttribute(node, name);
  return value && *value <= 0xFF ? static_cast<std::uint8_t>(*value) : fallback;
}

std::optional<CanIdentifier> CanIdentifierAttribute(const pugi::xml_node& node, const char* name) {
  static constexpr std::size_t kExtendedDigits = 8;
  const bool extended = std::string_view(node.attribute(name).value()).size() == kExtendedDigits;
  const auto number = HexAttribute(node, name);
  if (!number || *number > (extended ? kLastExtendedIdentifier : kLastBaseIdentifier)) return std::nullopt;
  return CanIdentifier{*number, extended};
}

std::optional<base::ByteBuffer> BytesAttribute(const pugi::xml_node& node, const char* name) {
  std::string hex = node.attribute(name).value();
  hex.erase(std::remove(hex.begin(), hex.end(), ' '), hex.end());
  try {
    return base::ByteBuffer::FromHex(hex);
  } catch (const base::Failure&) {
    return std::nullopt;
  }
}

}  // namespace korval::ecu
