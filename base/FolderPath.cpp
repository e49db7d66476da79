// SPDX-License-Identifier: MIT
#include "base/FolderPath.h"

#include <algorithm>

#include "base/Failure.h"

namespace korval::base {
namespace {

bool HasDriveLetter(const std::string& name) { return name.size() >= 2 && name[1] == ':'; }

}  // namespace

std::filesystem::path PathInFolder(const std::string& folder, const std::string& name) {
  if (name.empty()) throw Failure("No file name given");
  if (name.find('\0') != std::string::npos) throw Failure("File name '" + name + "' holds a NUL character");
  std::string portable = name;
  std::replace(portable.begin(), portable.end(), '\\', '/');
  const std::filesystem::path relative = std::filesystem::path(portable).lexically_normal();
  const bool leaves = portable.front() == '/' || HasDriveLetter(portable) || relative.is_absolute() ||
                      (!relative.empty() && *relative.begin() == "..");
  if (leaves) throw Failure("File name '" + name + "' leads out of the folder " + folder);
  return (std::filesystem::path(folder) / relative).make_preferred();
}

}  // namespace korval::base
