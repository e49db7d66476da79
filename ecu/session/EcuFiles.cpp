// SPDX-License-Identifier: MIT
#include "ecu/session/EcuFiles.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "ecu/ecufile/EcuFile.h"

namespace korval::ecu {
namespace {

std::vector<std::filesystem::path> XmlFilesIn(const std::string& folder) {
  std::vector<std::filesystem::path> paths;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->path().extension() == ".xml") paths.push_back(entry->path());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

}  // namespace

void EcuFiles::Offer(const std::shared_ptr<const XmlEcuFile>& file) {
  auto description = ReadEcuFile(file->Document());
  File& known = files_[description->Function().name];
  const bool unchanged =
      known.source && (known.source == file ||
                       (known.source->Path() == file->Path() && known.source->Stamp().IsSame(file->Stamp()) &&
                        base::SameContent(*known.source->Document(), *file->Document())));
  if (!unchanged) known = File{file, std::move(description)};
}

std::shared_ptr<const EcuDescription> EcuFiles::Find(const std::string& function) {
  // A file whose selection failed has no function to look for.
  if (!function.empty() && !files_.contains(function) && !folder_.empty()) SearchFolder(function);
  const auto found = files_.find(function);
  return found == files_.end() ? nullptr : found->second.description;
}

void EcuFiles::SearchFolder(const std::string& function) {
  for (const std::filesystem::path& path : XmlFilesIn(folder_)) {
    Searched& known = searched_[path];
    const base::FileStamp stamp = base::FileStamp::Of(path);
    if (stamp.ProvesUnchangedSince(known.stamp) && known.function != function) continue;
    known = {stamp, {}};
    try {
      const auto file = Read(path.string());
      known.function = file->Function();
      if (known.function == function) return Offer(file);
    } catch (const base::Failure&) {
      continue;  // not for this function in any case
    }
  }
}

}  // namespace korval::ecu
