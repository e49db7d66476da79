// SPDX-License-Identifier: MIT
#include "base/FileContent.h"

#include <fstream>
#include <system_error>

#include "base/Failure.h"

namespace korval::base {

std::string ReadFile(const std::filesystem::path& path, std::uintmax_t longest) {
  std::error_code error;
  const std::string name = path.string();
  if (!std::filesystem::exists(path, error)) {
    throw Failure("File not found: " + name + " (check the folder and the file's name)");
  }
  if (!std::filesystem::is_regular_file(path, error)) throw Failure("Not a file: " + name);
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error || size > longest) {
    throw Failure("File too large: " + name + " has more than " + std::to_string(longest) + " bytes");
  }
  std::ifstream file(path, std::ios::binary);
  std::string content(static_cast<std::size_t>(size), '\0');
  if (!file || !file.read(content.data(), static_cast<std::streamsize>(size))) {
    throw Failure("File cannot be read: " + name + " (check the access rights)");
  }
  return content;
}

}  // namespace korval::base
