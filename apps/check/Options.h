// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/UsageError.h"

namespace korval::apps {

struct Options {
  bool help = false;
  bool version = false;
  std::optional<std::string> korv_folder;
  std::vector<std::string> files;
};

/// Reads the arguments behind the program's name. Raises UsageError.
Options ParseOptions(const std::vector<std::string>& arguments);
/// The text of --help.
std::string HelpText();

}  // namespace korval::apps
