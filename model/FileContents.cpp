// SPDX-License-Identifier: MIT
#include "model/FileContents.h"

#include <filesystem>
#include <unordered_set>

#include "base/Failure.h"
#include "base/FolderPath.h"

namespace korval::model {
namespace {

using NameSet = viator3::EcuFile::Names;

// The data items that a section names; a few, where the ECU file may have tens of thousands.
NameSet NamesOf(const pugi::xml_node& section) {
  NameSet names;
  for (const pugi::xml_node& data : section.children("data")) {
    if (const pugi::xml_attribute name = data.attribute("name")) names.insert(name.value());
  }
  return names;
}

void ReadShortNames(const pugi::xml_node& section, const viator3::EcuFile& ecu_file, FileContent& content) {
  const NameSet data_items = ecu_file.Offered(NamesOf(section));
  for (const pugi::xml_node& data : section.children("data")) {
    const pugi::xml_attribute name = data.attribute("name");
    const std::string_view short_name = data.attribute("shortname").value();
    if (!name || short_name.empty() || !data_items.contains(name.value())) continue;
    content.short_names.emplace(short_name, name.value());  // the first element keeps the name
  }
}

}  // namespace

pugi::xml_node SectionOf(const pugi::xml_document& description, std::string_view name) {
  for (const pugi::xml_node& section : description.child("xml").children("ecu")) {
    const pugi::xml_attribute attribute = section.attribute("name");
    if (attribute && attribute.value() == name) return section;
  }
  return {};
}

FileContents::Loaded FileContents::Load(const Folders& folders, const std::string& description_file,
                                        const std::string& section_name, const ReadEcuFile& read_ecu_file) {
  const std::filesystem::path path = base::PathInFolder(folders.asap, description_file);
  FileContent content;
  content.description = documents_.Load(path);
  const pugi::xml_node section = SectionOf(*content.description, section_name);
  if (!section) throw base::Failure("Binary file '" + section_name + "' not found");
  const pugi::xml_attribute url = section.attribute("url");
  if (!url) {
    throw base::Failure("Korval file URL not found in the binary file '" + section_name + "' section");
  }
  const std::filesystem::path ecu_path = base::PathInFolder(folders.korv, url.value());
  const EcuFile ecu_file = read_ecu_file(ecu_path.string());
  content.korv_file_name = ecu_path.string();

  const auto key = std::pair(path.string(), section_name);
  const auto known = known_.find(key);
  if (known != known_.end() && known->second.ecu_file.lock() == ecu_file &&
      known->second.content->description == content.description &&
      known->second.content->korv_file_name == content.korv_file_name) {
    return {known->second.content, ecu_file};
  }
  if (ecu_file->Function().empty())
    throw base::Failure("Bad Ecu XML file 'ecuFileName', unable to load Ecu description");
  content.korv_function = ecu_file->Function();
  ReadShortNames(section, *ecu_file, content);
  Known& kept = known_[key];
  if (!kept.content || *kept.content != content) {
    kept.content = std::make_shared<const FileContent>(std::move(content));
  }
  kept.ecu_file = ecu_file;
  return {kept.content, ecu_file};
}

}  // namespace korval::model
