// SPDX-License-Identifier: MIT
#include "apps/check/ItemCheck.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "apps/check/ElementCheck.h"
#include "base/Failure.h"
#include "ecu/description/ItemCoding.h"
#include "ecu/description/ItemEncoding.h"
#include "ecu/ecufile/AttributeReader.h"
#include "ecu/ecufile/Grammar.h"
#include "ecu/ecufile/ItemReader.h"

namespace korval::apps {
namespace {

using ecu::Coding;
using ecu::ItemDescription;
using ecu::grammar::kItem;

constexpr char kLeftOut[] = "the item is left out";

// Why the loader refuses a place whose attributes are each right by themselves.
std::string WhyImpossible(const pugi::xml_node& element) {
  const std::string_view coding = element.attribute("Coding").value();
  if (coding == "ascii" || coding == "bytes") {
    return "takes whole bytes from a byte's start, in big byte order; " + std::string(kLeftOut) + ".";
  }
  if (coding == "float") return "a float has 32 or 64 bits; " + std::string(kLeftOut) + ".";
  if (element.attribute("BitsCount").as_int(8) > 64) {
    return "a number has at most 64 bits; " + std::string(kLeftOut) + ".";
  }
  if (std::string_view(element.attribute("ByteOrder").value()) == "little") {
    return "ByteOrder little takes whole bytes from a byte's start; " + std::string(kLeftOut) + ".";
  }
  return "its bits end behind byte " + std::to_string(ecu::kLongestMessage) + "; " + kLeftOut + ".";
}

bool CheckStep(CheckedFile& file, const pugi::xml_node& element) {
  if (!ElementCheck(file, element).Value(kItem["Step"])) return false;
  if (!element.attribute("Step") || *ecu::NumberAttribute(element, kItem["Step"]) != 0) return true;
  file.Report(element, "a Step of 0 makes all values the same; " + std::string(kLeftOut) + ".");
  return false;
}

// Says why the loader takes no item from an element.
void Explain(CheckedFile& file, const pugi::xml_node& element) {
  ElementCheck check(file, element);
  bool right = check.Required(kItem["Name"], kLeftOut);
  right &= check.Required(kItem["FirstByte"], kLeftOut);
  right &= check.Value(kItem["FirstByte"]);
  right &= check.Value(kItem["BitOffset"]);
  right &= check.Value(kItem["BitsCount"]);
  right &= check.Value(kItem["Coding"]);
  right &= check.Value(kItem["ByteOrder"]);
  right &= CheckStep(file, element);
  right &= check.Value(kItem["Offset"]);
  if (right) file.Report(element, WhyImpossible(element));
}

bool HasNamedValues(Coding coding) {
  return coding != Coding::kFloat && coding != Coding::kAscii && coding != Coding::kBytes;
}

// Whether the item can hold the raw value; the coding is asked to write it.
bool CanHold(const ItemDescription& item, const ItemDescription::NamedValue& named) {
  ItemDescription single = item;
  single.texts = {named};
  base::ByteBuffer message;
  message.SetLength(item.BytesNeeded());
  try {
    ecu::EncodeText(single, named.text, message);
  } catch (const base::Failure&) {
    return false;
  }
  return true;
}

void CheckTexts(CheckedFile& file, const pugi::xml_node& element, const ItemDescription& item) {
  std::set<std::int64_t> known;
  for (const pugi::xml_node& text : element.children("Text")) {
    const auto raw = ecu::RawAttribute(text, ecu::grammar::kText["Value"]);
    if (!HasNamedValues(item.coding)) {
      file.Report(text, "has no effect; only unsigned, signed, boolean and bcd values have names.");
    } else if (!raw) {
      file.Report(text, "the attribute Value is no whole number; the text is left out.");
    } else if (!known.insert(*raw).second) {
      file.Report(text, "this value has a name already; the first one serves.");
    } else if (!CanHold(item, {*raw, text.child_value()})) {
      file.Report(text, "the item cannot hold this value; give it more bits, or correct the value.");
    }
  }
}

// The place of an item's bit in the message, counted from the most significant bit of byte 1.
std::size_t MessageBit(const ItemDescription& item, std::size_t index) {
  const std::size_t place = item.first_bit + index;
  return item.little_endian ? place / 8 * 8 + 7 - place % 8 : place;
}

// Takes the bits of an item; gives an item that has one of them already.
const ItemDescription* Occupy(const ItemDescription& item, std::vector<const ItemDescription*>& bits) {
  bits.resize(std::max(bits.size(), item.BytesNeeded() * 8));
  const ItemDescription* other = nullptr;
  for (std::size_t i = 0; i < item.bits; ++i) {
    const ItemDescription*& owner = bits[MessageBit(item, i)];
    if (owner != nullptr) other = owner;
    owner = &item;
  }
  return other;
}

}  // namespace

std::optional<PlacedItem> CheckItem(CheckedFile& file, const pugi::xml_node& element) {
  auto item = ecu::ReadDataItem(element);
  if (!item) {
    Explain(file, element);
    return std::nullopt;
  }
  CheckTexts(file, element, *item);
  return PlacedItem{element, *std::move(item)};
}

std::vector<PlacedItem> CheckItems(CheckedFile& file, const pugi::xml_node& holder) {
  std::vector<PlacedItem> items;
  std::set<std::string> names;
  for (const pugi::xml_node& element : holder.children("DataItem")) {
    auto item = CheckItem(file, element);
    if (!item) continue;
    if (!names.insert(item->item.name).second) {
      file.Report(element, "this name stands here already; by name, only the first is reached.");
    }
    items.push_back(*std::move(item));
  }
  return items;
}

void CheckInside(CheckedFile& file, const std::vector<PlacedItem>& items, std::size_t length,
                 const std::string& message) {
  for (const PlacedItem& placed : items) {
    const std::size_t needed = placed.item.BytesNeeded();
    if (needed <= length) continue;
    file.Report(placed.element, "needs " + std::to_string(needed) + " bytes, but " + message + " has " +
                                    std::to_string(length) + ".");
  }
}

void NoteLostDigits(CheckedFile& file, const std::vector<PlacedItem>& items) {
  for (const PlacedItem& placed : items) {
    if (!ecu::LosesDigitsAsSingle(placed.item)) continue;
    file.Note(placed.element,
              "its values can have more digits than a single holds; get parameter and online values round "
              "them, extended get parameter does not.");
  }
}

void CheckOverlaps(CheckedFile& file, const std::vector<PlacedItem>& items) {
  std::vector<const ItemDescription*> bits;
  for (const PlacedItem& placed : items) {
    const ItemDescription* const other = Occupy(placed.item, bits);
    if (other != nullptr)
      file.Report(placed.element, "shares bits with " + other->name + "; writing one changes the other.");
  }
}

}  // namespace korval::apps
