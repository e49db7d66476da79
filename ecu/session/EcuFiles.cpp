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

void EcuFiles::Offer(const std::string& path, base::XmlDocument document) {
  const base::FileStamp stamp = base::FileStamp::Of(path);
  auto description = ReadEcuFile(document);
  File& known = files_[description->Function().name];
  const bool unchanged = known.description && known.path == path && known.stamp.IsSame(stamp) &&
                         (known.document == document || base::SameContent(*known.document, *document));
  if (!unchanged) known = File{path, stamp, std::move(document), std::move(description)};
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
      const base::XmlDocument document = base::LoadXmlFile(path);
      known.function = ReadEcuFile(document)->Function().name;
      if (known.function == function) return Offer(path.string(), document);
    } catch (const base::Failure&) {
      continue;  // not for this function in any case
    }
  }
}

}  // namespace korval::ecu
