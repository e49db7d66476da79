// SPDX-License-Identifier: MIT
#include "base/FileStatus.h"

#include <sys/stat.h>

namespace korval::base {
namespace {

std::int64_t Nanoseconds(const timespec& time) {
  return time.tv_sec * std::int64_t{1000000000} + time.tv_nsec;
}

}  // namespace

std::optional<FileStatus> StatusOf(const std::filesystem::path& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return FileStatus{status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim),
                    Nanoseconds(status.st_ctim)};
}

}  // namespace korval::base
