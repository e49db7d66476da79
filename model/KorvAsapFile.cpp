// SPDX-License-Identifier: MIT
#include "model/KorvAsapFile.h"

#include <filesystem>
#include <utility>

#include "base/Failure.h"
#include "base/FolderPath.h"

namespace korval::model {
namespace {

constexpr char kAutoCanSection[] = "AUTOCAN";

pugi::xml_node Section(const pugi::xml_document& description, std::string_view name) {
  for (const pugi::xml_node& section : description.child("xml").children("ecu")) {
    const pugi::xml_attribute attribute = section.attribute("name");
    if (attribute && attribute.value() == name) return section;
  }
  return {};
}

pugi::xml_attribute FunctionName(const pugi::xml_document& ecu_file) {
  for (const pugi::xml_node& target : ecu_file.child("xml").children("qor:Target")) {
    for (const pugi::xml_node& function : target.children("Function")) {
      if (const pugi::xml_attribute name = function.attribute("Name")) return name;
    }
  }
  return {};
}

using NameSet = std::unordered_set<std::string_view>;

// The data items that a section names; a few, where the ECU file may have tens of thousands.
NameSet NamesOf(const pugi::xml_node& section) {
  NameSet names;
  for (const pugi::xml_node& data : section.children("data")) {
    if (const pugi::xml_attribute name = data.attribute("name")) names.insert(name.value());
  }
  return names;
}

void KeepReferenced(const pugi::xml_node& request, const NameSet& wanted, NameSet& found) {
  for (const pugi::xml_node& received : request.children("Received")) {
    for (const pugi::xml_node& item : received.children("DataItem")) {
      const pugi::xml_attribute name = item.attribute("Name");
      if (!name || std::string_view(item.attribute("Ref").value()) != "1") continue;
      if (const auto known = wanted.find(name.value()); known != wanted.end()) found.insert(*known);
    }
  }
}

// Those of the wanted names that stand for a referenced item of an answer.
NameSet ReferencedItems(const pugi::xml_document& ecu_file, const NameSet& wanted) {
  NameSet found;
  for (const pugi::xml_node& target : ecu_file.child("xml").children("qor:Target")) {
    for (const pugi::xml_node& requests : target.children("Requests")) {
      for (const pugi::xml_node& request : requests.children("Request"))
        KeepReferenced(request, wanted, found);
    }
  }
  return found;
}

}  // namespace

KorvAsapFile::KorvAsapFile(Folders folders, std::string description_file, std::string binary_file,
                           std::int32_t destination, std::int32_t id)
    : folders_(std::move(folders)),
      description_file_(std::move(description_file)),
      binary_file_(std::move(binary_file)),
      destination_(destination),
      id_(id) {}

void KorvAsapFile::ReadDescriptionFile() {
  base::XmlDocument document = base::LoadXmlFile(base::PathInFolder(folders_.asap, description_file_));
  const pugi::xml_node section = Section(*document, binary_file_);
  if (!section) throw base::Failure("Binary file '" + binary_file_ + "' not found");
  const pugi::xml_attribute url = section.attribute("url");
  if (!url) {
    throw base::Failure("Korval file URL not found in the binary file '" + binary_file_ + "' section");
  }
  ReadShortNames(section, readKorvalEcuFile(url.value(), NamesOf(section)));
  description_ = std::move(document);
}

KorvAsapFile::Names KorvAsapFile::readKorvalEcuFile(const std::string& ecu_file_name, const Names& wanted) {
  const std::filesystem::path path = base::PathInFolder(folders_.korv, ecu_file_name);
  base::XmlDocument document = base::LoadXmlFile(path);
  const pugi::xml_attribute function = FunctionName(*document);
  if (!function) throw base::Failure("Bad Ecu XML file 'ecuFileName', unable to load Ecu description");
  Names found = ReferencedItems(*document, wanted);
  korv_function_ = function.value();
  korv_file_name_ = path.string();
  ecu_document_ = std::move(document);
  return found;
}

void KorvAsapFile::ReadShortNames(const pugi::xml_node& section, const Names& data_items) {
  short_names_.clear();
  for (const pugi::xml_node& data : section.children("data")) {
    const pugi::xml_attribute name = data.attribute("name");
    const std::string_view short_name = data.attribute("shortname").value();
    if (!name || short_name.empty() || !data_items.contains(name.value())) continue;
    short_names_.emplace(short_name, name.value());  // the first element keeps the name
  }
}

std::string KorvAsapFile::KorvDataName(const std::string& asap_data_name) const {
  const auto found = short_names_.find(asap_data_name);
  return found == short_names_.end() ? std::string() : std::string(found->second);
}

std::string KorvAsapFile::GetAutoCanFile() const {
  if (!description_) return {};
  const pugi::xml_attribute url = Section(*description_, kAutoCanSection).attribute("url");
  if (!url) return {};
  if (*url.value() == '\0') return (std::filesystem::path(folders_.korv) / "").string();  // loading it fails
  return base::PathInFolder(folders_.korv, url.value()).string();
}

}  // namespace korval::model
