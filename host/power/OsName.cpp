// SPDX-License-Identifier: MIT
#include "host/power/OsName.h"

namespace korval::host {
namespace {

OsName NameOfNt3(std::int32_t minor) {
  switch (minor) {
    case 10:
      return {"Windows NT", "NT3.1"};
    case 50:
      return {"Windows NT", "NT3.5"};
    case 51:
      return {"Windows NT", "NT3.51"};
    default:
      return {"Windows NT", "NT3"};
  }
}

OsName NameOfNtFamily(const OsVersion& version) {
  if (version.major == 3) return NameOfNt3(version.minor);
  if (version.major == 4 && version.minor == 0) return {"Windows NT", "NT 4"};
  if (version.major == 5 && version.minor == 0) return {"Windows 2000", "Win2000"};
  if (version.major == 5 && version.minor == 1) return {"Windows XP", "WinXP"};
  return {};
}

OsName NameOf9xFamily(const OsVersion& version) {
  if (version.major != 4) return {};
  switch (version.minor) {
    case 0:
      return {"Windows 95", "95"};
    case 10:
      return {"Windows 98", "98"};
    case 90:
      return {"Windows ME", "ME"};
    default:
      return {};
  }
}

}  // namespace

OsName GetOsVersion(const OsVersion& version) {
  switch (version.platform) {
    case OsVersion::kWin32s:
      return {"Win32s", "32s"};
    case OsVersion::k9xFamily:
      return NameOf9xFamily(version);
    case OsVersion::kNtFamily:
      return NameOfNtFamily(version);
    default:
      return {};
  }
}

}  // namespace korval::host
