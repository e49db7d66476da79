// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace korval::model {

/// Where the files lie that clients name, as the settings have it.
struct Folders {
  std::string asap;  ///< description files
  std::string korv;  ///< ECU files and CAN messaging files
};

}  // namespace korval::model
