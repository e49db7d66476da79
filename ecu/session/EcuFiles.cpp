// SPDX-License-Identifier: MIT
#include "ecu/session/EcuFiles.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

#include "base/Failure.h"

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
  Keep(path, EcuDescription::Load(std::move(document)));
}

void EcuFiles::Keep(const std::string& path, std::shared_ptr<const EcuDescription> description) {
  std::error_code ignored;  // a file that is gone has no time, and did not change
  File& known = files_[description->Function().name];
  const auto written = std::filesystem::last_write_time(path, ignored);
  if (known.path == path && known.written == written && known.description) return;
  known = File{path, written, std::move(description)};
}

std::shared_ptr<const EcuDescription> EcuFiles::Find(const std::string& function) {
  if (!files_.contains(function) && !folder_.empty()) SearchFolder(function);
  const auto found = files_.find(function);
  return found == files_.end() ? nullptr : found->second.description;
}

void EcuFiles::SearchFolder(const std::string& function) {
  for (const std::filesystem::path& path : XmlFilesIn(folder_)) {
    try {
      auto description = EcuDescription::Load(base::LoadXmlFile(path));
      if (description->Function().name == function) return Keep(path.string(), std::move(description));
    } catch (const base::Failure&) {
      continue;  // not for this function in any case
    }
  }
}

}  // namespace korval::ecu
