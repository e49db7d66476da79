// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace korval::base {

/// What the operating system knows of a file without reading it. Each system has a file of its own for this,
/// below platform/files.
struct FileStatus {
  std::uint64_t device = 0;
  std::uint64_t file = 0;  ///< its number on the device
  std::int64_t size = 0;
  std::int64_t written = 0;  ///< ns since 1970
  std::int64_t changed = 0;  ///< ns since 1970; rights, name and owner included
};

/// None where there is no file, or nobody may ask.
std::optional<FileStatus> StatusOf(const std::filesystem::path& path);

}  // namespace korval::base
