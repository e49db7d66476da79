// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace korval::base {

/// Reads a whole file of at most `longest` bytes. Raises Failure, with the file's name and what to do, where
/// there is none, it is longer, it cannot be read, or it is no regular file: a pipe would be waited for
/// without end.
std::string ReadFile(const std::filesystem::path& path, std::uintmax_t longest);

}  // namespace korval::base
