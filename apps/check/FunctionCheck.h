// SPDX-License-Identifier: MIT
#pragma once

#include <pugixml.hpp>

#include "apps/check/CheckedFile.h"

namespace korval::apps {

/// Checks what a Function element, or a Diagnostic element of a CAN messaging file, says about diagnostics
/// on CAN.
void CheckTransport(CheckedFile& file, const pugi::xml_node& element);

/// Checks the Function elements of an ECU file's targets. Gives the one that serves; none, with a finding,
/// when no function has a name.
pugi::xml_node CheckFunctions(CheckedFile& file, const pugi::xml_node& root);

}  // namespace korval::apps
