// SPDX-License-Identifier: MIT
#include "base/XmlFileCache.h"

namespace korval::base {

XmlDocument XmlFileCache::Load(const std::filesystem::path& path) {
  const FileStamp stamp = FileStamp::Of(path);
  const auto known = known_.find(path);
  XmlDocument held = known == known_.end() ? nullptr : known->second.document.lock();
  if (held && stamp.ProvesUnchangedSince(known->second.stamp)) return held;
  XmlDocument loaded = LoadXmlFile(path);
  if (held && SameContent(*held, *loaded)) loaded = held;
  known_[path] = {stamp, loaded};
  return loaded;
}

}  // namespace korval::base
