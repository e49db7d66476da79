// SPDX-License-Identifier: MIT
#include "apps/check/ElementCheck.h"

#include <algorithm>

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

bool ElementCheck::Refuse(const char* name, const std::string& what) {
  file_.Report(element_,
               std::string(name) + "=\"" + element_.attribute(name).value() + "\" is " + what + ".");
  return false;
}

bool ElementCheck::Required(const char* name, const std::string& why) {
  if (*element_.attribute(name).value() != '\0') return true;
  file_.Report(element_, std::string("the attribute ") + name + " is missing; " + why + ".");
  return false;
}

bool ElementCheck::Integer(const char* name, std::int32_t lowest, std::int32_t highest) {
  if (!element_.attribute(name)) return true;
  const std::int32_t refused = lowest - 1;
  if (ecu::IntegerAttribute(element_, name, refused, lowest, highest) != refused) return true;
  return Refuse(name, "no whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
}

bool ElementCheck::Number(const char* name) {
  if (!element_.attribute(name) || ecu::NumberAttribute(element_, name)) return true;
  return Refuse(name, "no number (a decimal point, no comma, no unit)");
}

bool ElementCheck::Hex(const char* name, std::uint32_t highest) {
  if (!element_.attribute(name)) return true;
  const auto value = ecu::HexAttribute(element_, name);
  if (value && *value <= highest) return true;
  return Refuse(name, "no hexadecimal number from 0 to " + HexText(highest) + " (digits alone, no 0x)");
}

bool ElementCheck::OneOf(const char* name, std::initializer_list<std::string_view> names) {
  if (!element_.attribute(name)) return true;
  if (std::find(names.begin(), names.end(), element_.attribute(name).value()) != names.end()) return true;
  std::string list;
  for (const std::string_view known : names) list.append(list.empty() ? "" : ", ").append(known);
  return Refuse(name, "none of " + list);
}

std::optional<ecu::CanIdentifier> ElementCheck::Identifier(const char* name) {
  if (!element_.attribute(name)) return std::nullopt;
  const auto identifier = ecu::CanIdentifierAttribute(element_, name);
  if (!identifier) {
    Refuse(name, "no CAN identifier (hexadecimal to 7FF, or 8 digits to 1FFFFFFF for 29 bits)");
  }
  return identifier;
}

std::optional<base::ByteBuffer> ElementCheck::Bytes(const char* name) {
  if (!element_.attribute(name)) return std::nullopt;
  auto bytes = ecu::BytesAttribute(element_, name);
  if (!bytes) Refuse(name, "no sequence of bytes in hexadecimal (two digits a byte)");
  return bytes;
}

}  // namespace korval::apps
