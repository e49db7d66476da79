// SPDX-License-Identifier: MIT
#pragma once

#include <pugixml.hpp>

#include "apps/check/CheckedFile.h"
#include "apps/check/EcuFileCheck.h"

namespace korval::apps {

/// Checks the Simulation element of an ECU file against the file's requests and items.
void CheckSimulation(CheckedFile& file, const pugi::xml_node& root, const EcuFileNames& names);

}  // namespace korval::apps
