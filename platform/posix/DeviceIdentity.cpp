// SPDX-License-Identifier: MIT
#include "platform/DeviceIdentity.h"

#include <sys/stat.h>

namespace korval::platform {

bool IsSameDevice(const std::string& one, const std::string& other) {
  if (one == other) return true;
  struct stat first = {};
  struct stat second = {};
  if (::stat(one.c_str(), &first) != 0 || ::stat(other.c_str(), &second) != 0) return false;
  return S_ISCHR(first.st_mode) && S_ISCHR(second.st_mode) && first.st_rdev == second.st_rdev;
}

}  // namespace korval::platform
