// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "host/power/PowerPlatform.h"

namespace korval::host {

/// How people call an operating system. Both names are empty for one that is not in the vocabulary.
struct OsName {
  std::string long_name;
  std::string short_name;

  friend bool operator==(const OsName&, const OsName&) = default;
};

OsName GetOsVersion(const OsVersion& version);

}  // namespace korval::host
