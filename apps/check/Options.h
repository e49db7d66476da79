// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace korval::apps {

/// A command line that cannot be followed; the text says what is wrong with it.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

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
