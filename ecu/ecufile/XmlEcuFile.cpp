// SPDX-License-Identifier: MIT
#include "ecu/ecufile/XmlEcuFile.h"

#include <utility>

#include <pugixml.hpp>

namespace korval::ecu {
namespace {

std::string FunctionName(const pugi::xml_document& ecu_file) {
  for (const pugi::xml_node& target : ecu_file.child("xml").children("qor:Target")) {
    for (const pugi::xml_node& function : target.children("Function")) {
      if (const pugi::xml_attribute name = function.attribute("Name")) return name.value();
    }
  }
  return {};
}

void KeepReferenced(const pugi::xml_node& request, const XmlEcuFile::Names& wanted,
                    XmlEcuFile::Names& found) {
  for (const pugi::xml_node& received : request.children("Received")) {
    for (const pugi::xml_node& item : received.children("DataItem")) {
      const pugi::xml_attribute name = item.attribute("Name");
      if (!name || std::string_view(item.attribute("Ref").value()) != "1") continue;
      if (const auto known = wanted.find(name.value()); known != wanted.end()) found.insert(*known);
    }
  }
}

}  // namespace

XmlEcuFile::XmlEcuFile(std::string path, base::FileStamp stamp, base::XmlDocument document)
    : path_(std::move(path)),
      stamp_(stamp),
      document_(std::move(document)),
      function_(FunctionName(*document_)) {}

XmlEcuFile::Names XmlEcuFile::Offered(const Names& names) const {
  Names found;
  for (const pugi::xml_node& target : document_->child("xml").children("qor:Target")) {
    for (const pugi::xml_node& requests : target.children("Requests")) {
      for (const pugi::xml_node& request : requests.children("Request"))
        KeepReferenced(request, names, found);
    }
  }
  return found;
}

}  // namespace korval::ecu
