// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include <pugixml.hpp>

namespace korval::base {

/// A parsed document that several owners may read.
using XmlDocument = std::shared_ptr<const pugi::xml_document>;

/// Largest XML file that is read, in bytes.
inline constexpr std::uintmax_t kMaxXmlFileSize = std::uintmax_t{256} * 1024 * 1024;

/// Reads and parses an XML file in one of the encodings of XmlEncoding. Document type definitions are
/// skipped, entities they define stay unexpanded. Raises Failure with the parser's error code, its reason,
/// line and column; the code is 1 when the file is missing, no plain file or larger than kMaxXmlFileSize, and
/// when it declares an encoding that is not understood.
XmlDocument LoadXmlFile(const std::filesystem::path& path);

/// The same for a text in memory; `name` stands in the reason of a failure.
XmlDocument LoadXmlText(std::string_view bytes, const std::string& name);

/// Whether two documents are the same but for blanks and comments.
bool SameContent(const pugi::xml_document& one, const pugi::xml_document& other);

}  // namespace korval::base
