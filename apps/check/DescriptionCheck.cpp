// SPDX-License-Identifier: MIT
#include "apps/check/DescriptionCheck.h"

#include <string_view>
#include <utility>

#include "apps/check/ElementCheck.h"
#include "apps/check/FileKind.h"
#include "base/Failure.h"
#include "base/FolderPath.h"
#include "ecu/ecufile/EcuFile.h"
#include "ecu/ecufile/Grammar.h"
#include "ecu/ecufile/MessagingReader.h"
#include "ecu/ecufile/XmlEcuFileCache.h"
#include "model/KorvAsapFile.h"

namespace korval::apps {
namespace {

constexpr std::string_view kAutoCan = "AUTOCAN";

bool IsAutoCan(const pugi::xml_node& section) { return section.attribute("name").value() == kAutoCan; }

// A data item of that name anywhere in the children `holder` of the requests.
bool HasItem(const pugi::xml_document& ecu_file, const char* holder, std::string_view name) {
  const pugi::xml_node found = ecu_file.find_node([&](const pugi::xml_node& node) {
    return std::string_view(node.name()) == "DataItem" && node.attribute("Name").value() == name &&
           std::string_view(node.parent().name()) == holder;
  });
  return !found.empty();
}

std::set<std::string> ItemNames(const pugi::xml_document& ecu_file) {
  std::set<std::string> names;
  ecu_file.find_node([&](const pugi::xml_node& node) {
    if (std::string_view(node.name()) == "DataItem") names.insert(node.attribute("Name").value());
    return false;
  });
  return names;
}

std::string WhyNotOffered(const pugi::xml_document& ecu_file, std::string_view name) {
  if (HasItem(ecu_file, "Received", name)) return "offers it to nobody; give its data item Ref=\"1\"";
  if (HasItem(ecu_file, "Sent", name))
    return "only writes it; a request must return it as well, with Ref=\"1\"";
  return "has no answer with a data item of this name; names are case-sensitive";
}

}  // namespace

void DescriptionCheck::Run(const pugi::xml_node& root) {
  for (const pugi::xml_node& section : root.children("ecu")) {
    if (!IsAutoCan(section)) continue;
    messaging_ = LoadMessaging(section);
    break;
  }
  for (const pugi::xml_node& section : root.children("ecu")) {
    if (CheckName(section) && !IsAutoCan(section)) CheckSection(section);
  }
}

bool DescriptionCheck::CheckName(const pugi::xml_node& section) {
  if (!ElementCheck(file_, section).Required(ecu::grammar::kSection["name"], "a client cannot select it"))
    return false;
  if (sections_.insert(section.attribute("name").value()).second) return true;
  file_.Report(section, "there is a section of this name already; a client reaches only the first one.");
  return false;
}

ecu::MessagingFile DescriptionCheck::LoadMessaging(const pugi::xml_node& section) {
  if (!ElementCheck(file_, section)
           .Required(ecu::grammar::kSection["url"], "it must name the CAN messaging file"))
    return {};
  try {
    return ecu::LoadMessagingFile(
        base::PathInFolder(korv_folder_, section.attribute("url").value()).string());
  } catch (const base::Failure& failure) {
    file_.Report(section, failure.Description() + ".");
    return {};
  }
}

std::optional<DescriptionCheck::EcuFile> DescriptionCheck::LoadEcuFile(const pugi::xml_node& section) {
  if (!ElementCheck(file_, section).Required(ecu::grammar::kSection["url"], "it must name the ECU file"))
    return std::nullopt;
  const std::string url = section.attribute("url").value();
  try {
    EcuFile ecu_file;
    ecu_file.path = base::PathInFolder(korv_folder_, url);
    ecu_file.document = base::LoadXmlFile(ecu_file.path);
    if (KindOf(*ecu_file.document) != FileKind::kEcuFile) {
      file_.Report(section, url + " is no ECU file: it has no element xml/qor:Target.");
      return std::nullopt;
    }
    ecu_file.function = ecu::ReadEcuFile(ecu_file.document)->Function();
    return ecu_file;
  } catch (const base::Failure& failure) {
    file_.Report(section, url + " cannot be used. " + failure.Description() + ".");
    return std::nullopt;
  }
}

void DescriptionCheck::CheckSection(const pugi::xml_node& section) {
  const auto ecu_file = LoadEcuFile(section);
  if (!ecu_file) return;
  CheckFunction(section, *ecu_file);
  CheckData(section, *ecu_file);
}

void DescriptionCheck::CheckFunction(const pugi::xml_node& section, const EcuFile& ecu_file) {
  const ecu::FunctionDescription& function = ecu_file.function;
  const auto [known, is_new] = ecu_files_.try_emplace(function.name, ecu_file.path);
  if (!is_new && known->second != ecu_file.path) {
    file_.Report(section, "its ECU file has the function " + function.name + ", and so has " +
                              known->second.string() + "; the file selected last serves both.");
  }
  if (function.protocol != "DiagOnCAN") return;
  const auto transport = function.Can().CompletedBy(messaging_.TransportOf(function.name));
  if (!transport.request_id || !transport.response_id) {
    file_.Report(section,
                 "neither its ECU file nor the messaging file of the section AUTOCAN gives the function " +
                     function.name + " its CAN identifiers (RequestId and ResponseId).");
  }
}

// The server's own loader is asked which short names work.
void DescriptionCheck::CheckData(const pugi::xml_node& section, const EcuFile& ecu_file) {
  const std::filesystem::path& path = file_.Path();
  model::KorvAsapFile names({path.parent_path().string(), korv_folder_}, path.filename().string(),
                            section.attribute("name").value(), 0, 0);
  ecu::XmlEcuFileCache ecu_files;
  names.ReadDescriptionFile([&](const std::string& full_path) { return ecu_files.Read(full_path); });
  const std::set<std::string> items = ItemNames(*ecu_file.document);
  std::set<std::string> short_names;
  for (const pugi::xml_node& data : section.children("data")) {
    ElementCheck check(file_, data);
    const std::string name = data.attribute("name").value();
    const std::string short_name = data.attribute("shortname").value();
    const bool named = check.Required(ecu::grammar::kData["name"], "it leads to no data item");
    if (!check.Required(ecu::grammar::kData["shortname"], "a client cannot ask for it") || !named) continue;
    if (!short_names.insert(short_name).second) {
      file_.Report(data, "the short name " + short_name + " stands here already; the first one serves.");
    } else if (names.KorvDataName(short_name) != name) {
      file_.Report(data,
                   ecu_file.path.filename().string() + " " + WhyNotOffered(*ecu_file.document, name) + ".");
    } else if (short_name != name && items.contains(short_name)) {
      std::string text = ecu_file.path.filename().string();
      text.append(" has another data item of the name ").append(short_name);
      file_.Report(data, text.append("; a client that asks for ")
                             .append(short_name)
                             .append(" gets ")
                             .append(name)
                             .append("."));
    }
  }
}

}  // namespace korval::apps
