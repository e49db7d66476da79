// SPDX-License-Identifier: MIT
#include "ecu/description/AttributeReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>

#include "base/Failure.h"
#include "base/NumberText.h"

namespace korval::ecu {
namespace {

std::optional<Coding> CodingOf(std::string_view name) {
  if (name.empty() || name == "unsigned") return Coding::kUnsigned;
  if (name == "signed") return Coding::kSigned;
  if (name == "float") return Coding::kFloat;
  if (name == "boolean") return Coding::kBoolean;
  if (name == "ascii") return Coding::kAscii;
  if (name == "bytes") return Coding::kBytes;
  if (name == "bcd") return Coding::kBcd;
  return std::nullopt;
}

std::optional<bool> IsLittleEndian(std::string_view name) {
  if (name == "little") return true;
  if (name.empty() || name == "big") return false;
  return std::nullopt;
}

// A whole number from 0 to `highest`; none when there is another text.
std::optional<std::size_t> PlaceAttribute(const pugi::xml_node& node, const char* name, std::size_t absent,
                                          std::int32_t highest) {
  const pugi::xml_attribute attribute = node.attribute(name);
  if (!attribute) return absent;
  const auto value = base::ReadInteger(attribute.value());
  if (!value || *value < 0 || *value > highest) return std::nullopt;
  return static_cast<std::size_t>(*value);
}

std::optional<double> ScaleAttribute(const pugi::xml_node& node, const char* name, double absent) {
  return node.attribute(name) ? NumberAttribute(node, name) : absent;
}

bool HasWholeBytes(const ItemDescription& item) { return item.first_bit % 8 == 0 && item.bits % 8 == 0; }

// Whether the coding knows that many bits, at that place.
bool IsPossible(const ItemDescription& item) {
  if (item.bits == 0 || item.BytesNeeded() > kLongestMessage) return false;
  if (item.IsText()) return HasWholeBytes(item) && !item.little_endian;
  if (item.bits > 64 || (item.little_endian && !HasWholeBytes(item))) return false;
  return item.coding != Coding::kFloat || item.bits == 32 || item.bits == 64;
}

std::vector<ItemDescription::NamedValue> ReadTexts(const pugi::xml_node& node) {
  std::vector<ItemDescription::NamedValue> texts;
  for (const pugi::xml_node& text : node.children("Text")) {
    const std::string_view digits = text.attribute("Value").value();
    ItemDescription::NamedValue named;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), named.raw);
    if (error != std::errc{} || end != digits.data() + digits.size()) continue;
    named.text = text.child_value();
    texts.push_back(std::move(named));
  }
  return texts;
}

}  // namespace

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

// A wrong number would show wrong values, so an item with one is left out, and only an absent one has a
// default.
std::optional<ItemDescription> ReadDataItem(const pugi::xml_node& node) {
  const auto coding = CodingOf(node.attribute("Coding").value());
  const auto little_endian = IsLittleEndian(node.attribute("ByteOrder").value());
  const auto first_byte = PlaceAttribute(node, "FirstByte", 0, kLongestMessage);
  const auto bit_offset = PlaceAttribute(node, "BitOffset", 0, 7);
  const auto bits = PlaceAttribute(node, "BitsCount", 8, kLongestMessage * 8);
  const auto step = ScaleAttribute(node, "Step", 1);
  const auto offset = ScaleAttribute(node, "Offset", 0);
  if (!coding || !little_endian || !first_byte || !bit_offset || !bits || !step || !offset)
    return std::nullopt;
  ItemDescription item;
  item.name = node.attribute("Name").value();
  if (item.name.empty() || *first_byte == 0 || *step == 0) return std::nullopt;
  item.first_bit = (*first_byte - 1) * 8 + *bit_offset;
  item.bits = *bits;
  item.coding = *coding;
  item.little_endian = *little_endian;
  item.scaled = node.attribute("Step") || node.attribute("Offset");
  item.offset = *offset;
  if (!IsPossible(item)) return std::nullopt;
  item.SetStep(*step);
  item.unit = node.attribute("Unit").value();
  item.texts = ReadTexts(node);
  return item;
}

std::vector<ItemDescription> ReadDataItems(const pugi::xml_node& node) {
  std::vector<ItemDescription> items;
  for (const pugi::xml_node& child : node.children("DataItem")) {
    if (auto item = ReadDataItem(child)) items.push_back(*std::move(item));
  }
  return items;
}

}  // namespace korval::ecu
