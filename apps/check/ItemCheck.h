// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "apps/check/CheckedFile.h"
#include "ecu/description/ItemDescription.h"

namespace korval::apps {

/// A DataItem element that the loader takes.
struct PlacedItem {
  pugi::xml_node element;
  ecu::ItemDescription item;
};

/// Checks a DataItem element; none when the loader leaves it out, with a finding that says why.
std::optional<PlacedItem> CheckItem(CheckedFile& file, const pugi::xml_node& element);
/// Checks the DataItem children of a node, and that no name stands twice. Gives those that the loader takes.
std::vector<PlacedItem> CheckItems(CheckedFile& file, const pugi::xml_node& holder);

/// Reports the items that need more than `length` bytes; `message` names what has that length.
void CheckInside(CheckedFile& file, const std::vector<PlacedItem>& items, std::size_t length,
                 const std::string& message);
/// Notes the items whose values lose digits in get and online values.
void NoteLostDigits(CheckedFile& file, const std::vector<PlacedItem>& items);
/// Reports the items that share bits with one before them.
void CheckOverlaps(CheckedFile& file, const std::vector<PlacedItem>& items);

}  // namespace korval::apps
