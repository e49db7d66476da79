// SPDX-License-Identifier: MIT
#include "apps/check/FileKind.h"

namespace korval::apps {

FileKind KindOf(const pugi::xml_document& document) {
  const pugi::xml_node root = document.child("xml");
  if (root.child("qor:Target")) return FileKind::kEcuFile;
  if (root.child("ecu")) return FileKind::kDescription;
  return root.child("messaging") ? FileKind::kMessaging : FileKind::kUnknown;
}

}  // namespace korval::apps
