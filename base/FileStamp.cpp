// SPDX-License-Identifier: MIT
#include "base/FileStamp.h"

#include <chrono>

#include <sys/stat.h>

namespace korval::base {
namespace {

// The coarsest times that file systems keep, and some.
constexpr std::int64_t kSettledNs = 2500000000;

std::int64_t Nanoseconds(const timespec& time) {
  return time.tv_sec * std::int64_t{1000000000} + time.tv_nsec;
}

std::int64_t Now() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

}  // namespace

FileStamp FileStamp::Of(const std::filesystem::path& path) {
  FileStamp stamp;
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return stamp;
  stamp.exists_ = true;
  stamp.device_ = status.st_dev;
  stamp.file_ = status.st_ino;
  stamp.size_ = status.st_size;
  stamp.written_ = Nanoseconds(status.st_mtim);
  stamp.changed_ = Nanoseconds(status.st_ctim);
  stamp.settled_ = Now() - stamp.written_ > kSettledNs;
  return stamp;
}

bool FileStamp::IsSame(const FileStamp& other) const {
  return exists_ == other.exists_ && device_ == other.device_ && file_ == other.file_ &&
         size_ == other.size_ && written_ == other.written_ && changed_ == other.changed_;
}

}  // namespace korval::base
