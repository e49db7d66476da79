// SPDX-License-Identifier: MIT
#pragma once

#include <pugixml.hpp>

namespace korval::apps {

enum class FileKind { kDescription, kEcuFile, kMessaging, kUnknown };

/// What a document is, by the children of its root.
FileKind KindOf(const pugi::xml_document& document);

}  // namespace korval::apps
