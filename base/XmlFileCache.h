// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <map>
#include <memory>

#include "base/FileStamp.h"
#include "base/XmlFile.h"

namespace korval::base {

/// Loads XML files; of one that has not changed it gives the same document again, as long as somebody holds
/// it.
class XmlFileCache {
 public:
  /// Raises Failure as LoadXmlFile does.
  XmlDocument Load(const std::filesystem::path& path);

 private:
  struct Known {
    FileStamp stamp;
    std::weak_ptr<const pugi::xml_document> document;
  };

  std::map<std::filesystem::path, Known> known_;
};

}  // namespace korval::base
