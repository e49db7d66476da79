// SPDX-License-Identifier: MIT
#include "ecu/ecufile/ItemReader.h"

#include <utility>

#include "ecu/ecufile/AttributeReader.h"
#include "ecu/ecufile/Grammar.h"

namespace korval::ecu {
namespace {

using grammar::kItem;

// A place as the file gives it, or its default; none when it is required and absent, or another text.
std::optional<std::size_t> PlaceAttribute(const pugi::xml_node& node, const Attribute& rule) {
  const auto value = node.attribute(rule.name) ? OptionalInteger(node, rule) : rule.fallback;
  return value ? std::optional(static_cast<std::size_t>(*value)) : std::nullopt;
}

std::optional<double> ScaleAttribute(const pugi::xml_node& node, const Attribute& rule) {
  return node.attribute(rule.name) ? NumberAttribute(node, rule) : static_cast<double>(*rule.fallback);
}

std::vector<ItemDescription::NamedValue> ReadTexts(const pugi::xml_node& node) {
  std::vector<ItemDescription::NamedValue> texts;
  for (const pugi::xml_node& text : node.children(grammar::kText.name)) {
    const auto raw = RawAttribute(text, grammar::kText["Value"]);
    if (raw) texts.push_back({*raw, text.child_value()});
  }
  return texts;
}

}  // namespace

// A wrong number would show wrong values, so an item with one is left out, and only an absent one has a
// default.
std::optional<ItemDescription> ReadDataItem(const pugi::xml_node& node) {
  const auto coding = KnownChoice(node, kItem["Coding"]);
  const auto byte_order = KnownChoice(node, kItem["ByteOrder"]);
  const auto first_byte = PlaceAttribute(node, kItem["FirstByte"]);
  const auto bit_offset = PlaceAttribute(node, kItem["BitOffset"]);
  const auto bits = PlaceAttribute(node, kItem["BitsCount"]);
  const auto step = ScaleAttribute(node, kItem["Step"]);
  const auto offset = ScaleAttribute(node, kItem["Offset"]);
  if (!coding || !byte_order || !first_byte || !bit_offset || !bits || !step || !offset) return std::nullopt;
  ItemDescription item;
  item.name = TextAttribute(node, kItem["Name"]);
  if (item.name.empty() || *step == 0) return std::nullopt;
  item.first_bit = (*first_byte - 1) * 8 + *bit_offset;
  item.bits = *bits;
  item.coding = static_cast<Coding>(*coding);
  item.little_endian = *byte_order == 1;
  item.scaled = node.attribute(kItem["Step"].name) || node.attribute(kItem["Offset"].name);
  item.offset = *offset;
  if (!item.IsPossible()) return std::nullopt;
  item.SetStep(*step);
  item.unit = TextAttribute(node, kItem["Unit"]);
  item.texts = ReadTexts(node);
  return item;
}

std::vector<ItemDescription> ReadDataItems(const pugi::xml_node& node) {
  std::vector<ItemDescription> items;
  for (const pugi::xml_node& child : node.children(kItem.name)) {
    if (auto item = ReadDataItem(child)) items.push_back(*std::move(item));
  }
  return items;
}

}  // namespace korval::ecu
