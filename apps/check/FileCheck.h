// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "apps/check/CheckedFile.h"

namespace korval::apps {

/// Checks a file of any kind; what is wrong stands in its findings. `korv_folder` is where the urls of a
/// description file lead; none: into its own folder.
void CheckFile(CheckedFile& file, const std::optional<std::string>& korv_folder);

}  // namespace korval::apps
