// SPDX-License-Identifier: MIT
#include "ecu/ecufile/XmlEcuFileCache.h"

namespace korval::ecu {

std::shared_ptr<const XmlEcuFile> XmlEcuFileCache::Read(const std::string& path) {
  const base::FileStamp stamp = base::FileStamp::Of(path);
  const base::XmlDocument document = documents_.Load(path);
  auto& known = known_[path];
  auto file = known.lock();
  if (!file || file->Document() != document) {
    file = std::make_shared<const XmlEcuFile>(path, stamp, document);
    known = file;
  }
  return file;
}

}  // namespace korval::ecu
