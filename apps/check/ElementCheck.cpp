// SPDX-License-Identifier: MIT
#include "apps/check/ElementCheck.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "ecu/ecufile/AttributeReader.h"

namespace korval::apps {
namespace {

std::string HexText(std::uint32_t number) {
  static constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (; number > 0; number >>= 4) text.insert(text.begin(), kDigits[number & 0xF]);
  return text;
}

}  // namespace

bool ElementCheck::Refuse(const ecu::Attribute& rule, const std::string& what) {
  file_.Report(element_,
               std::string(rule.name) + "=\"" + ecu::TextAttribute(element_, rule) + "\" is " + what + ".");
  return false;
}

bool ElementCheck::Required(const ecu::Attribute& rule, const std::string& why) {
  if (*ecu::TextAttribute(element_, rule) != '\0') return true;
  file_.Report(element_, std::string("the attribute ") + rule.name + " is missing; " + why + ".");
  return false;
}

bool ElementCheck::Value(const ecu::Attribute& rule) {
  if (!element_.attribute(rule.name)) return true;
  switch (rule.kind) {
    case ecu::Attribute::Kind::kText:
    case ecu::Attribute::Kind::kRaw:
      return true;
    case ecu::Attribute::Kind::kInteger:
      return Integer(rule);
    case ecu::Attribute::Kind::kNumber:
      return ecu::NumberAttribute(element_, rule) ||
             Refuse(rule, "no number (a decimal point, no comma, no unit)");
    case ecu::Attribute::Kind::kHex:
      return Hex(rule);
    case ecu::Attribute::Kind::kIdentifier:
      return Identifier(rule).has_value();
    case ecu::Attribute::Kind::kBytes:
      return Bytes(rule).has_value();
    case ecu::Attribute::Kind::kChoice:
      return OneOf(rule);
  }
  return true;
}

bool ElementCheck::Integer(const ecu::Attribute& rule) {
  if (ecu::OptionalInteger(element_, rule)) return true;
  return Refuse(
      rule, "no whole number from " + std::to_string(rule.lowest) + " to " + std::to_string(rule.highest));
}

// Nothing is said of a number below the range, which counts as absent.
bool ElementCheck::Hex(const ecu::Attribute& rule) {
  const std::string_view text = ecu::TextAttribute(element_, rule);
  if (!text.empty() && text == rule.word) return true;
  ecu::Attribute from_zero = rule;
  from_zero.lowest = 0;
  if (ecu::HexAttribute(element_, from_zero)) return true;
  return Refuse(rule, "no hexadecimal number from 0 to " + HexText(static_cast<std::uint32_t>(rule.highest)) +
                          " (digits alone, no 0x)");
}

bool ElementCheck::OneOf(const ecu::Attribute& rule) {
  const auto choices = ecu::NamesIn(rule.choices);
  const std::string_view text = ecu::TextAttribute(element_, rule);
  if (std::find(choices.begin(), choices.end(), text) != choices.end()) return true;
  std::string list;
  for (const char* known : choices) list.append(list.empty() ? "" : ", ").append(known);
  return Refuse(rule, "none of " + list);
}

std::optional<ecu::CanIdentifier> ElementCheck::Identifier(const ecu::Attribute& rule) {
  if (!element_.attribute(rule.name)) return std::nullopt;
  const auto identifier = ecu::CanIdentifierAttribute(element_, rule);
  if (!identifier) {
    Refuse(rule, "no CAN identifier (hexadecimal to 7FF, or 8 digits to 1FFFFFFF for 29 bits)");
  }
  return identifier;
}

std::optional<base::ByteBuffer> ElementCheck::Bytes(const ecu::Attribute& rule) {
  if (!element_.attribute(rule.name)) return std::nullopt;
  auto bytes = ecu::BytesAttribute(element_, rule);
  if (!bytes) Refuse(rule, "no sequence of bytes in hexadecimal (two digits a byte)");
  return bytes;
}

}  // namespace korval::apps
