// SPDX-License-Identifier: MIT
#include "ecu/ecufile/XmlEcuFile.h"

#include <utility>

#include <pugixml.hpp>

#include "ecu/ecufile/Grammar.h"

namespace korval::ecu {
namespace {

using grammar::kFunction;
using grammar::kItem;
using grammar::kReceived;
using grammar::kRequest;
using grammar::kRequests;
using grammar::kTarget;
using grammar::kXml;

std::string FunctionName(const pugi::xml_document& ecu_file) {
  for (const pugi::xml_node& target : ecu_file.child(kXml.name).children(kTarget.name)) {
    for (const pugi::xml_node& function : target.children(kFunction.name)) {
      if (const pugi::xml_attribute name = function.attribute(kFunction["Name"].name)) return name.value();
    }
  }
  return {};
}

void KeepReferenced(const pugi::xml_node& request, const XmlEcuFile::Names& wanted,
                    XmlEcuFile::Names& found) {
  for (const pugi::xml_node& received : request.children(kReceived.name)) {
    for (const pugi::xml_node& item : received.children(kItem.name)) {
      const pugi::xml_attribute name = item.attribute(kItem["Name"].name);
      if (!name || std::string_view(item.attribute(kItem["Ref"].name).value()) != "1") continue;
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
  for (const pugi::xml_node& target : document_->child(kXml.name).children(kTarget.name)) {
    for (const pugi::xml_node& requests : target.children(kRequests.name)) {
      for (const pugi::xml_node& request : requests.children(kRequest.name))
        KeepReferenced(request, names, found);
    }
  }
  return found;
}

}  // namespace korval::ecu
