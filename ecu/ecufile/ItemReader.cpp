// SPDX-License-Identifier: MIT
#include "ecu/ecufile/ItemReader.h"

#include <charconv>
#include <string_view>
#include <utility>

#include "base/NumberText.h"
#include "ecu/ecufile/AttributeReader.h"

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
  if (!item.IsPossible()) return std::nullopt;
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
