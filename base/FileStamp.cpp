// SPDX-License-Identifier: MIT
#include "base/FileStamp.h"

#include <chrono>
#include <optional>

#include "base/FileStatus.h"

namespace korval::base {
namespace {

// The coarsest times that file systems keep, and some.
constexpr std::int64_t kSettledNs = 2500000000;

std::int64_t Now() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

}  // namespace

FileStamp FileStamp::Of(const std::filesystem::path& path) {
  FileStamp stamp;
  const std::optional<FileStatus> status = StatusOf(path);
  if (!status) return stamp;
  stamp.exists_ = true;
  stamp.device_ = status->device;
  stamp.file_ = status->file;
  stamp.size_ = status->size;
  stamp.written_ = status->written;
  stamp.changed_ = status->changed;
  stamp.settled_ = Now() - stamp.written_ > kSettledNs;
  return stamp;
}

bool FileStamp::IsSame(const FileStamp& other) const {
  return exists_ == other.exists_ && device_ == other.device_ && file_ == other.file_ &&
         size_ == other.size_ && written_ == other.written_ && changed_ == other.changed_;
}

}  // namespace korval::base
