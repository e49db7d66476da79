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

/// Reads and parses an XML file. UTF-8, UTF-16, UTF-32 and ISO-8859-1 are recognised by byte order mark
/// or declaration, windows-1252 by declaration. Document type definitions are skipped, entities they
/// define stay unexpanded. Raises Failure with the parser's error code and its reason; the code is 1
/// when the file is missing, no plain file or larger than kMaxXmlFileSize.
XmlDocument LoadXmlFile(const std::filesystem::path& path);

/// The same for a text in memory; `name` stands in the reason of a failure.
XmlDocument LoadXmlText(std::string_view text, const std::string& name);

}  // namespace korval::base
