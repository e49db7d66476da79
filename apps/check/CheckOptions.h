// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/commandline/UsageError.h"

namespace korval::apps {

/// The command line of the check.
struct CheckOptions {
  bool help = false;
  bool version = false;
  std::optional<std::string> korv_folder;
  std::vector<std::string> files;
};

/// Reads the arguments behind the program's name. Raises UsageError.
CheckOptions ReadCheckOptions(const std::vector<std::string>& arguments);
/// The text of --help.
std::string CheckHelp();

}  // namespace korval::apps
