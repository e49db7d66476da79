// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace korval::base {

/// Joins a folder and a file name that a client or a file gave (UTF-8). Both '\' and '/' separate folders
/// in the name; the result uses the system's own separator. Raises Failure when the name is empty,
/// absolute, holds a drive letter or a NUL, or leads out of the folder: what a client names must never
/// reach the rest of the disk.
std::filesystem::path PathInFolder(const std::string& folder, const std::string& name);

}  // namespace korval::base
