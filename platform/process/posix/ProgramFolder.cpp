// SPDX-License-Identifier: MIT
#include "platform/process/ProgramFolder.h"

#include <filesystem>

namespace korval::platform {

std::string ProgramFolder() { return std::filesystem::read_symlink("/proc/self/exe").parent_path().string(); }

}  // namespace korval::platform
