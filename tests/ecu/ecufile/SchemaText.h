// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>

namespace korval::tests {

/// The XML schemas of the grammar, by the names that they have in data/schema. A schema holds the known
/// attributes to their kinds and ranges, and passes over what the readers pass over: unknown attributes and
/// elements, and elements in a place where they mean nothing.
std::map<std::string, std::string> SchemaTexts();

}  // namespace korval::tests
