// SPDX-License-Identifier: MIT
#include "base/XmlFile.h"

#include <algorithm>
#include <cctype>

#include "base/AnsiText.h"
#include "base/Failure.h"
#include "base/FileContent.h"

namespace korval::base {
namespace {

// The declaration stands in the first line; what follows cannot change the encoding.
bool DeclaresWindows1252(std::string_view text) {
  if (!text.starts_with("<?xml")) return false;
  std::string declaration(text.substr(0, std::min<std::size_t>(text.find("?>"), 200)));
  std::transform(declaration.begin(), declaration.end(), declaration.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return declaration.find("windows-1252") != std::string::npos ||
         declaration.find("cp1252") != std::string::npos;
}

std::string WithPosition(const pugi::xml_parse_result& result, const std::string& name) {
  return std::string(result.description()) + " (" + name + ", byte " + std::to_string(result.offset) + ")";
}

XmlDocument Checked(const std::shared_ptr<pugi::xml_document>& document, const pugi::xml_parse_result& result,
                    const std::string& name) {
  if (!result) throw Failure(static_cast<std::int32_t>(result.status), WithPosition(result, name));
  if (!document->document_element()) {
    throw Failure(static_cast<std::int32_t>(pugi::status_no_document_element),
                  "No document element found (" + name + ")");
  }
  return document;
}

}  // namespace

XmlDocument LoadXmlText(std::string_view text, const std::string& name) {
  const auto document = std::make_shared<pugi::xml_document>();
  if (DeclaresWindows1252(text)) {
    const std::string utf8 =
        Utf8FromAnsi(ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    return Checked(document,
                   document->load_buffer(utf8.data(), utf8.size(), pugi::parse_default, pugi::encoding_utf8),
                   name);
  }
  return Checked(document, document->load_buffer(text.data(), text.size()), name);
}

XmlDocument LoadXmlFile(const std::filesystem::path& path) {
  std::string text = ReadFile(path, kMaxXmlFileSize);
  const std::string name = path.filename().string();
  if (text.empty() || DeclaresWindows1252(text)) return LoadXmlText(text, name);
  // The parser keeps pointers into the text, which spares a copy of a large file.
  struct Owner {
    std::string text;
    pugi::xml_document document;
  };
  const auto owner = std::make_shared<Owner>();
  owner->text = std::move(text);
  const auto result = owner->document.load_buffer_inplace(owner->text.data(), owner->text.size());
  return Checked(std::shared_ptr<pugi::xml_document>(owner, &owner->document), result, name);
}

}  // namespace korval::base
