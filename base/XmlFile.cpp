// SPDX-License-Identifier: MIT
#include "base/XmlFile.h"

#include <algorithm>

#include "base/Failure.h"
#include "base/FileContent.h"
#include "base/XmlEncoding.h"

namespace korval::base {
namespace {

// Where a place of a text in UTF-8 stands, lines and characters counted from 1.
std::string LineAndColumn(std::string_view text, std::size_t place) {
  const std::string_view before = text.substr(0, place);
  const auto lines = std::count(before.begin(), before.end(), '\n');
  const std::string_view line = before.substr(before.rfind('\n') + 1);  // npos + 1 is 0
  const auto characters =
      std::count_if(line.begin(), line.end(), [](char byte) { return (byte & 0xC0) != 0x80; });
  return "line " + std::to_string(lines + 1) + ", column " + std::to_string(characters + 1);
}

[[noreturn]] void RefuseEncoding(std::string_view bytes, const std::string& name) {
  throw Failure("The encoding '" + DeclaredEncoding(bytes) + "' is not understood (" + name +
                "): store the file in UTF-8 and write encoding=\"UTF-8\" in its first line; UTF-16, "
                "windows-1252, ISO-8859-1 and ISO-8859-15 are understood too");
}

XmlDocument Parsed(std::string_view utf8, const std::string& name) {
  const auto document = std::make_shared<pugi::xml_document>();
  const auto result =
      document->load_buffer(utf8.data(), utf8.size(), pugi::parse_default, pugi::encoding_utf8);
  if (!result && result.status != pugi::status_no_document_element) {
    throw Failure(static_cast<std::int32_t>(result.status),
                  std::string(result.description()) + " (" + name + ", " +
                      LineAndColumn(utf8, static_cast<std::size_t>(result.offset)) + ")");
  }
  if (!document->document_element()) {
    throw Failure(static_cast<std::int32_t>(pugi::status_no_document_element),
                  "No document element found (" + name + ")");
  }
  return document;
}

bool SameAttributes(const pugi::xml_node& one, const pugi::xml_node& other) {
  pugi::xml_attribute mine = one.first_attribute();
  pugi::xml_attribute theirs = other.first_attribute();
  for (; mine && theirs; mine = mine.next_attribute(), theirs = theirs.next_attribute()) {
    if (std::string_view(mine.name()) != theirs.name() || std::string_view(mine.value()) != theirs.value())
      return false;
  }
  return !mine && !theirs;
}

// Alike but for their children, of which neither or both have some.
bool SameNode(const pugi::xml_node& one, const pugi::xml_node& other) {
  return one.type() == other.type() && std::string_view(one.name()) == other.name() &&
         std::string_view(one.value()) == other.value() && SameAttributes(one, other) &&
         one.first_child().empty() == other.first_child().empty();
}

}  // namespace

XmlDocument LoadXmlText(std::string_view bytes, const std::string& name) {
  const auto encoding = EncodingOf(bytes);
  if (!encoding) RefuseEncoding(bytes, name);
  if (*encoding == XmlEncoding::kUtf8) return Parsed(WithoutMark(bytes, *encoding), name);
  return Parsed(Utf8Text(bytes, *encoding), name);
}

XmlDocument LoadXmlFile(const std::filesystem::path& path) {
  std::string bytes = ReadFile(path, kMaxXmlFileSize);
  const std::string name = path.filename().string();
  if (bytes.empty() || EncodingOf(bytes) != XmlEncoding::kUtf8) return LoadXmlText(bytes, name);
  // The parser keeps pointers into the text, which spares a copy of a large file.
  struct Owner {
    std::string text;
    pugi::xml_document document;
  };
  const auto owner = std::make_shared<Owner>();
  owner->text = std::move(bytes);
  const std::size_t mark = owner->text.size() - WithoutMark(owner->text, XmlEncoding::kUtf8).size();
  const auto result = owner->document.load_buffer_inplace(
      owner->text.data() + mark, owner->text.size() - mark, pugi::parse_default, pugi::encoding_utf8);
  if (result && owner->document.document_element()) {
    return std::shared_ptr<pugi::xml_document>(owner, &owner->document);
  }
  // The parser has written into the text: the place of the mistake is found in the file as it is.
  return LoadXmlText(ReadFile(path, kMaxXmlFileSize), name);
}

bool SameContent(const pugi::xml_document& one, const pugi::xml_document& other) {
  pugi::xml_node mine = one;
  pugi::xml_node theirs = other;
  while (true) {  // in the order of the text; nesting costs no stack
    if (!SameNode(mine, theirs)) return false;
    if (mine.first_child()) {
      mine = mine.first_child();
      theirs = theirs.first_child();
      continue;
    }
    while (mine != one && !mine.next_sibling()) {
      if (theirs.next_sibling()) return false;
      mine = mine.parent();
      theirs = theirs.parent();
    }
    if (mine == one) return true;
    mine = mine.next_sibling();
    theirs = theirs.next_sibling();
  }
}

}  // namespace korval::base
