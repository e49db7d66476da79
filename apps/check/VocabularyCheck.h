// SPDX-License-Identifier: MIT
#pragma once

#include <pugixml.hpp>

#include "apps/check/CheckedFile.h"

namespace korval::apps {

/// Unknown elements and attributes are ignored, so a misspelt or misplaced one is a mistake that nothing else
/// shows. Reports names that differ from a known one in one character, in two that changed places, or in the
/// case, and known elements inside a known one that has no use for them.
void CheckVocabulary(CheckedFile& file, const pugi::xml_node& root);

}  // namespace korval::apps
