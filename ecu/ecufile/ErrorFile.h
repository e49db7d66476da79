// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "ecu/description/ErrorTable.h"

namespace korval::ecu {

/// Reads the texts of the table's language from a file
///   <errors><error number="2000"><text lang="en">...</text></error>...</errors>
/// The built-in texts stay when it is missing or cannot be read. Gives a sentence when it is there and
/// damaged, else "".
std::string LoadErrorFile(const std::string& path, ErrorTable& table);

}  // namespace korval::ecu
