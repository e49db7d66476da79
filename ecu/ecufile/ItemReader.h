// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <vector>

#include <pugixml.hpp>

#include "ecu/description/ItemDescription.h"

namespace korval::ecu {

/// A DataItem element; none when it has no name or its bits cannot exist in a message.
std::optional<ItemDescription> ReadDataItem(const pugi::xml_node& node);
/// The DataItem children of a node.
std::vector<ItemDescription> ReadDataItems(const pugi::xml_node& node);

}  // namespace korval::ecu
