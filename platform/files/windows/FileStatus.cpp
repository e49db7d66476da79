// SPDX-License-Identifier: MIT
#include "base/FileStatus.h"

#include <memory>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace korval::base {
namespace {

struct CloseFile {
  using pointer = HANDLE;
  void operator()(HANDLE file) const { ::CloseHandle(file); }
};
using File = std::unique_ptr<HANDLE, CloseFile>;

std::uint64_t Joined(DWORD high, DWORD low) { return (std::uint64_t{high} << 32U) | low; }

// Windows counts steps of 100 ns since 1601.
std::int64_t Nanoseconds(std::int64_t steps) {
  constexpr std::int64_t kStepsTo1970 = 116444736000000000;
  return (steps - kStepsTo1970) * 100;
}

File OpenToAsk(const std::filesystem::path& path) {
  const HANDLE file = ::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  return File(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

}  // namespace

std::optional<FileStatus> StatusOf(const std::filesystem::path& path) {
  const File file = OpenToAsk(path);
  BY_HANDLE_FILE_INFORMATION known = {};
  FILE_BASIC_INFO times = {};
  if (!file || !::GetFileInformationByHandle(file.get(), &known) ||
      !::GetFileInformationByHandleEx(file.get(), FileBasicInfo, &times, sizeof times))
    return std::nullopt;
  FileStatus status;
  status.device = known.dwVolumeSerialNumber;
  status.file = Joined(known.nFileIndexHigh, known.nFileIndexLow);
  status.size = static_cast<std::int64_t>(Joined(known.nFileSizeHigh, known.nFileSizeLow));
  status.written = Nanoseconds(times.LastWriteTime.QuadPart);
  status.changed = Nanoseconds(times.ChangeTime.QuadPart);
  return status;
}

}  // namespace korval::base
