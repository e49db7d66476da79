// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>
#include <string>

#include "base/XmlFileCache.h"
#include "ecu/ecufile/XmlEcuFile.h"

namespace korval::ecu {

/// Reads ECU files. One that has not changed is the same object again, as long as somebody holds it.
class XmlEcuFileCache {
 public:
  /// Raises Failure when the file cannot be read.
  std::shared_ptr<const XmlEcuFile> Read(const std::string& path);

 private:
  base::XmlFileCache documents_;
  std::map<std::string, std::weak_ptr<const XmlEcuFile>> known_;
};

}  // namespace korval::ecu
