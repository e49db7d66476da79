// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>

namespace korval::base {

/// What tells whether a file has changed: which file it is, its size and its times. Take it before the file
/// is read, so that a change while it is read shows.
class FileStamp {
 public:
  FileStamp() = default;
  /// Of a file that is not there it is empty; all empty ones are the same.
  static FileStamp Of(const std::filesystem::path& path);

  bool IsSame(const FileStamp& other) const;
  /// Whether nobody can have changed the file since the earlier stamp. A file that was just being written
  /// then may have been written again without any of its times having moved on.
  bool ProvesUnchangedSince(const FileStamp& earlier) const { return earlier.settled_ && IsSame(earlier); }

 private:
  bool exists_ = false;
  bool settled_ = false;  // it was last written well before the stamp was taken
  std::uint64_t device_ = 0;
  std::uint64_t file_ = 0;
  std::int64_t size_ = 0;
  std::int64_t written_ = 0;  // ns
  std::int64_t changed_ = 0;  // ns; rights, name and owner included
};

}  // namespace korval::base
