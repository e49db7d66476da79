// SPDX-License-Identifier: MIT
#include "ecu/ecufile/AttributeReader.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "base/NumberText.h"

namespace korval::ecu {
namespace {

std::optional<std::uint32_t> HexNumber(std::string_view digits) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (digits.empty() || error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
  return value;
}

}  // namespace

std::optional<std::int32_t> OptionalInteger(const pugi::xml_node& node, const Attribute& rule) {
  const auto value = base::ReadInteger(TextAttribute(node, rule));
  if (!value || *value < rule.lowest || *value > rule.highest) return std::nullopt;
  return value;
}

std::int32_t IntegerAttribute(const pugi::xml_node& node, const Attribute& rule) {
  return OptionalInteger(node, rule).value_or(rule.fallback.value_or(0));
}

Milliseconds MillisecondsAttribute(const pugi::xml_node& node, const Attribute& rule) {
  return Milliseconds(IntegerAttribute(node, rule));
}

std::optional<std::int64_t> RawAttribute(const pugi::xml_node& node, const Attribute& rule) {
  const std::string_view digits = TextAttribute(node, rule);
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
  return value;
}

std::optional<double> NumberAttribute(const pugi::xml_node& node, const Attribute& rule) {
  return base::ReadNumber(TextAttribute(node, rule));
}

std::optional<std::uint32_t> HexAttribute(const pugi::xml_node& node, const Attribute& rule) {
  const auto value = HexNumber(TextAttribute(node, rule));
  if (!value || std::cmp_less(*value, rule.lowest) || std::cmp_greater(*value, rule.highest)) {
    return std::nullopt;
  }
  return value;
}

std::uint8_t ByteAttribute(const pugi::xml_node& node, const Attribute& rule, std::uint8_t fallback) {
  return static_cast<std::uint8_t>(HexAttribute(node, rule).value_or(fallback));
}

std::uint8_t ByteAttribute(const pugi::xml_node& node, const Attribute& rule) {
  return ByteAttribute(node, rule, static_cast<std::uint8_t>(rule.fallback.value_or(0)));
}

std::optional<CanIdentifier> CanIdentifierAttribute(const pugi::xml_node& node, const Attribute& rule) {
  static constexpr std::size_t kExtendedDigits = 8;
  const std::string_view digits = TextAttribute(node, rule);
  const bool extended = digits.size() == kExtendedDigits;
  const auto number = HexNumber(digits);
  if (!number || *number > (extended ? kLastExtendedIdentifier : kLastBaseIdentifier)) return std::nullopt;
  return CanIdentifier{*number, extended};
}

std::optional<base::ByteBuffer> BytesAttribute(const pugi::xml_node& node, const Attribute& rule) {
  std::string hex = TextAttribute(node, rule);
  std::erase(hex, ' ');
  try {
    return base::ByteBuffer::FromHex(hex);
  } catch (const base::Failure&) {
    return std::nullopt;
  }
}

bool HasLength(const Attribute& rule, std::size_t bytes) {
  return std::cmp_greater_equal(bytes, rule.lowest) && std::cmp_less_equal(bytes, rule.highest);
}

std::optional<std::size_t> KnownChoice(const pugi::xml_node& node, const Attribute& rule) {
  const std::string_view text = TextAttribute(node, rule);
  if (text.empty() && rule.fallback) return static_cast<std::size_t>(*rule.fallback);
  const auto choices = NamesIn(rule.choices);
  const auto found = std::find(choices.begin(), choices.end(), text);
  if (found == choices.end()) return std::nullopt;
  return static_cast<std::size_t>(found - choices.begin());
}

std::size_t ChoiceAttribute(const pugi::xml_node& node, const Attribute& rule) {
  return KnownChoice(node, rule).value_or(static_cast<std::size_t>(rule.fallback.value_or(0)));
}

}  // namespace korval::ecu
